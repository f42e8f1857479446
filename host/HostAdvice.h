// SPDX-License-Identifier: MIT
// What would have been right in a statement that the object refused, clipped or took otherwise
// than it was meant, as far as the object itself tells: its attributes with their ranges and
// choices, its messages with their help, and what its creation takes.
#pragma once

#include "HostScript.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Object;

/// The facts about one object. Thread: main, between vectors.
class Advice {
public:
    /// @param object  made
    explicit Advice(const Object& object);

    /// What is wrong with a message, "" where nothing is known.
    std::string OfMessage(std::span<const Atom> message) const;
    /// The same for the part of it at which the object does not complain: values beyond the range
    /// of an attribute, which are clipped.
    std::string OfClippedValues(std::span<const Atom> message) const;
    /// What is wrong with the box text from which the object was made.
    /// @param hasComplained  the object did; else only what it takes in silence is looked for:
    ///                       numbers that it clips, and words that name no subtype
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
        std::string kinds;               // of its arguments; "" where it checks them itself
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
    std::map<std::string, Attribute> attributes_;  // that can be set
    std::map<std::string, Message> messages_;
};

}  // namespace Quilo::Host
