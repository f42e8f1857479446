// SPDX-License-Identifier: MIT
// Suggests how to correct a statement that the object refused or clipped. All it knows comes from
// the object itself: the ranges and choices of its attributes, the help of its messages, and which
// arguments its creation accepts.
#pragma once

#include "HostScript.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Object;

/// Advice about one object. Thread: main, between vectors.
class Advice {
public:
    /// @param object  must have been made
    explicit Advice(const Object& object);

    /// What is wrong with a message; "" when nothing is found.
    std::string OfMessage(std::span<const Atom> message) const;
    /// The same for values beyond the range of an attribute, which the object clips without an
    /// error.
    std::string OfClippedValues(std::span<const Atom> message) const;
    /// What is wrong with the box text from which the object was made.
    /// @param hasComplained  whether the object posted an error; if not, only what it accepts
    /// without one is looked for: numbers that it clips, and words that name no subtype
    /// @param mayTry  other objects may be made to find out which numbers of outlets a type takes
    std::vector<std::string> OfBox(std::span<const Atom> box,
                                   bool hasComplained,
                                   bool mayTry) const;

private:
    struct Attribute {
        std::optional<double> least, most;
        std::vector<std::string> words;  // choices
        std::string units;
    };
    struct Message {
        std::string kinds;  // types of the arguments; "" where the method checks them itself
        std::vector<std::string> words;  // keywords that its help names
    };

    void TakeAttributes();
    void TakeMessages();

    std::string OfSelector(const std::string& selector) const;
    std::string OfAttribute(const std::string& name, std::span<const Atom> values) const;
    std::string OfRange(const std::string& name, std::span<const Atom> values) const;
    std::string OfPosition(std::span<const Atom> message) const;
    std::string OfFormat(const std::string& selector, std::span<const Atom> words) const;
    std::string OfSubType(const std::string& word) const;
    std::string OfType(std::span<const Atom> plain, std::span<const Atom> box) const;

    const Object& object_;
    std::map<std::string, Attribute> attributes_;  // settable ones, by name
    std::map<std::string, Message> messages_;
};

}  // namespace Quilo::Host
