// SPDX-License-Identifier: MIT
// The state of an object as a dictionary: one entry for each attribute, under its name.
#pragma once

#include "max/VelkMaxObjectParts.h"

namespace VelkMax {

/// Sends a dictionary with the named attributes, or with all listed ones, from the dump outlet. It
/// can be read or sent back until the next such message refills it.
void DumpDictMessage(const ObjectParts& object, Atoms atoms);
void DictionaryMessage(t_object* object, t_symbol* name);
/// Asks the user for a file after the message has ended, and writes the state to it.
void ExportDictMessage(const ObjectParts& object);
/// @param name  of a JSON file in the search path; empty: the user is asked for one
void ReadDictMessage(const ObjectParts& object, t_symbol* name);

/// The keys of a dictionary in the order in which they were added.
class DictionaryKeys {
public:
    explicit DictionaryKeys(t_dictionary* dictionary)
        : dictionary_(dictionary),
          isRead_(dictionary_getkeys_ordered(dictionary, &count_, &keys_) == MAX_ERR_NONE) {}
    ~DictionaryKeys() {
        if (keys_ != nullptr) dictionary_freekeys(dictionary_, count_, keys_);
    }
    DictionaryKeys(const DictionaryKeys&) = delete;
    DictionaryKeys& operator=(const DictionaryKeys&) = delete;

    bool IsRead() const noexcept { return isRead_; }
    std::span<t_symbol* const> View() const { return {keys_, static_cast<std::size_t>(count_)}; }

private:
    t_dictionary* dictionary_;
    max_long count_ = 0;
    t_symbol** keys_ = nullptr;
    bool isRead_;
};

/// The dictionary from which an object may be made in place of arguments. Attributes of the
/// instance do not exist before the engine does, so it is applied in two passes.
/// Pattern: SetKnown, add instance attributes, SetKnown, ReportUnknown.
class CreationDictionary {
public:
    /// @param needed  attributes that every such dictionary should hold: a warning is posted for a
    /// missing one, which keeps its default
    CreationDictionary(t_object* object,
                       std::span<t_atom> arguments,
                       std::span<const char* const> needed);

    /// False when the object is made from arguments.
    bool IsGiven() const noexcept { return dictionary_ != nullptr; }
    /// Sets the attributes that the object has and that were not set yet, in the order of the
    /// entries.
    /// @return false, after an error was posted, when the dictionary cannot be read
    bool SetKnown();
    void ReportUnknown() const;

private:
    t_object* object_;
    t_dictionary* dictionary_;
    std::vector<t_symbol*> done_;
};

}  // namespace VelkMax
