// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

/// Reads values off the fuzzer's bytes; zeros once they are used up.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}

    bool Empty() const { return bytes_.empty(); }

    /// Any bit pattern: NaN, infinities and denormals are wanted.
    template <class T>
    T Take() {
        T value{};
        const std::size_t count = bytes_.size() < sizeof(T) ? bytes_.size() : sizeof(T);
        std::memcpy(&value, bytes_.data(), count);
        bytes_ = bytes_.subspan(count);
        return value;
    }

    unsigned Below(unsigned limit) { return Take<std::uint8_t>() % limit; }

private:
    std::span<const std::uint8_t> bytes_;
};
