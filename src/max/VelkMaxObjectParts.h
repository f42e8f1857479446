// SPDX-License-Identifier: MIT
// The parts of an object that the messages common to all classes use.
#pragma once

#include "max/VelkMaxDoor.h"

namespace VelkMax {

/// The dictionary that an object sends from its dump outlet: made at the first use, under one name
/// for the life of the object.
/// Thread: main or scheduler.
class KeptDictionary {
public:
    KeptDictionary() = default;
    ~KeptDictionary();
    KeptDictionary(const KeptDictionary&) = delete;
    KeptDictionary& operator=(const KeptDictionary&) = delete;

    /// Null when Max has no memory for it.
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
