// SPDX-License-Identifier: MIT
// An OSC message in memory.
#pragma once

#include "osc/VelkDspOscAddress.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tav {

/// One argument of a message; its tag says which value it has.
class OSCArgument {
public:
    using Blob = std::vector<std::byte>;

    template <std::same_as<bool> Flag>
    explicit OSCArgument(Flag flag) : tag_(flag ? 'T' : 'F') {}
    explicit OSCArgument(float number) : tag_('f'), float_(number) {}
    /// Deliberate: kept as the nearest 32-bit float, as any "f".
    explicit OSCArgument(double number) : OSCArgument(static_cast<float>(number)) {}
    explicit OSCArgument(std::int32_t number) : tag_('i'), integer_(number) {}
    explicit OSCArgument(std::int64_t number) : tag_('h'), integer_(number) {}
    explicit OSCArgument(std::string text) : tag_('s'), string_(std::move(text)) {}
    explicit OSCArgument(const char* text) : OSCArgument(std::string(text)) {}
    explicit OSCArgument(Blob blob) : tag_('b'), blob_(std::move(blob)) {}

    /// F T b f h i s
    char Tag() const noexcept { return tag_; }
    bool Boolean() const noexcept { return tag_ == 'T'; }
    const std::string& String() const noexcept { return string_; }
    const Blob& Bytes() const noexcept { return blob_; }
    float Float() const noexcept { return float_; }
    std::int32_t Int32() const noexcept { return static_cast<std::int32_t>(integer_); }
    std::int64_t Int64() const noexcept { return integer_; }

    bool IsNumber() const noexcept { return tag_ == 'f' || tag_ == 'i' || tag_ == 'h'; }
    /// The value of a number.
    double Number() const noexcept {
        return tag_ == 'f' ? static_cast<double>(float_) : static_cast<double>(integer_);
    }

    bool operator==(const OSCArgument&) const = default;

private:
    char tag_;
    float float_ = 0.f;
    std::int64_t integer_ = 0;
    std::string string_;
    Blob blob_;
};

/// An address and its arguments.
class OSCMessage {
public:
    OSCMessage() = default;
    explicit OSCMessage(std::string_view address) : address_(address) {}
    template <class... Values>
    requires(sizeof...(Values) > 0) explicit OSCMessage(std::string_view address,
                                                        Values&&... values)
        : address_(address),
          arguments_{OSCArgument(std::forward<Values>(values))...} {}

    const OSCAddress& Address() const noexcept { return address_; }
    const std::string& AddressText() const noexcept { return address_.Text(); }
    /// Without the comma: "ffs".
    std::string TypeTags() const;
    const std::vector<OSCArgument>& Arguments() const noexcept { return arguments_; }
    void Add(OSCArgument argument) { arguments_.push_back(std::move(argument)); }

private:
    OSCAddress address_;
    std::vector<OSCArgument> arguments_;
};

}  // namespace tav
