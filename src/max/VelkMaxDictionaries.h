// SPDX-License-Identifier: MIT
// The state of an object as a dictionary: one entry an attribute, by its name.
#pragma once

#include "max/VelkMaxObjectParts.h"

namespace VelkMax {

/// The attributes asked for, or all that are listed, out of the dump outlet. What came out can be
/// sent back at any time, until the next message fills the object's dictionary anew.
void DumpDictMessage(const ObjectParts& object, Atoms atoms);
void DictionaryMessage(t_object* object, t_symbol* name);
/// Lets the user choose a file, when the message is over.
void ExportDictMessage(const ObjectParts& object);
/// @param name  of a JSON file in the search path; the empty symbol lets the user choose one
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

/// The dictionary with which an object may be made in place of arguments. Attributes of the
/// instance exist only once the object is almost finished, so it is applied in two passes.
/// Pattern: SetKnown, add instance attributes, SetKnown, ReportUnknown.
class CreationDictionary {
public:
    /// @param needed  attributes that every creation gives: one that is missing keeps its default,
    /// and that is said
    CreationDictionary(t_object* object,
                       std::span<t_atom> arguments,
                       std::span<const char* const> needed);

    /// False: the object was made from arguments.
    bool IsGiven() const noexcept { return dictionary_ != nullptr; }
    /// Sets what the object has and was not set yet, in the order of the entries.
    /// @return false, and said, when the dictionary cannot be read
    bool SetKnown();
    void ReportUnknown() const;

private:
    t_object* object_;
    t_dictionary* dictionary_;
    std::vector<t_symbol*> done_;
};

}  // namespace VelkMax
