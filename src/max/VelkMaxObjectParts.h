// SPDX-License-Identifier: MIT
// What the messages that every object answers need of it.
#pragma once

#include "max/VelkMaxDoor.h"

namespace VelkMax {

/// The dictionary that an object gives away: made when it is first wanted, under one name for the
/// life of the object.  Thread: main or scheduler.
class KeptDictionary {
public:
    KeptDictionary() = default;
    ~KeptDictionary();
    KeptDictionary(const KeptDictionary&) = delete;
    KeptDictionary& operator=(const KeptDictionary&) = delete;

    /// Null where Max has no memory for it.
    t_dictionary* Get();
    t_symbol* Name() const noexcept { return name_; }

private:
    t_dictionary* dictionary_ = nullptr;
    t_symbol* name_ = nullptr;
};

struct ObjectParts {
    t_object* header;
    Door& door;
    KeptDictionary& dictionary;

    friend t_object* MaxObjectOf(const ObjectParts& parts) { return parts.header; }
    Door& TheDoor() const { return door; }
};

}  // namespace VelkMax
