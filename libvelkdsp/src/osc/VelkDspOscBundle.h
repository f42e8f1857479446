// SPDX-License-Identifier: MIT
// An OSC bundle in memory: messages and bundles that belong together.
#pragma once

#include "osc/VelkDspOscMessage.h"

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

namespace tav {

class OSCBundle {
public:
    class Element;

    /// The time tag that means "at once".
    static constexpr std::uint64_t kImmediately = 1;

    explicit OSCBundle(std::uint64_t timeTag = kImmediately);
    OSCBundle(const OSCBundle&);
    OSCBundle(OSCBundle&&) noexcept;
    OSCBundle& operator=(const OSCBundle&);
    OSCBundle& operator=(OSCBundle&&) noexcept;
    ~OSCBundle();

    /// In the NTP format, as read; this library does not wait for it.
    std::uint64_t TimeTag() const noexcept { return timeTag_; }
    const std::vector<Element>& Elements() const noexcept { return elements_; }
    void Add(OSCMessage message);
    void Add(OSCBundle bundle);

    /// Calls `use` with every message, those of nested bundles included, in their order.
    template <class Use>
    void ForEachMessage(const Use& use) const;

private:
    std::uint64_t timeTag_;
    std::vector<Element> elements_;
};

/// A message or a bundle. Asking for the kind that it is not throws tav::Exception.
class OSCBundle::Element {
public:
    explicit Element(OSCMessage message) : content_(std::move(message)) {}
    explicit Element(OSCBundle bundle) : content_(std::vector{std::move(bundle)}) {}

    bool IsMessage() const noexcept { return std::holds_alternative<OSCMessage>(content_); }
    const OSCMessage& Message() const;
    const OSCBundle& Bundle() const;

private:
    std::variant<OSCMessage, std::vector<OSCBundle>> content_;  // of bundles there is exactly one
};

// Here, where an element is complete.
inline OSCBundle::OSCBundle(std::uint64_t timeTag) : timeTag_(timeTag) {}
inline OSCBundle::OSCBundle(const OSCBundle&) = default;
inline OSCBundle::OSCBundle(OSCBundle&&) noexcept = default;
inline OSCBundle& OSCBundle::operator=(const OSCBundle&) = default;
inline OSCBundle& OSCBundle::operator=(OSCBundle&&) noexcept = default;
inline OSCBundle::~OSCBundle() = default;

inline void OSCBundle::Add(OSCMessage message) { elements_.emplace_back(std::move(message)); }
inline void OSCBundle::Add(OSCBundle bundle) { elements_.emplace_back(std::move(bundle)); }

template <class Use>
void OSCBundle::ForEachMessage(const Use& use) const {
    for (const Element& element : elements_) {
        if (element.IsMessage()) {
            use(element.Message());
        } else {
            element.Bundle().ForEachMessage(use);
        }
    }
}

}  // namespace tav
