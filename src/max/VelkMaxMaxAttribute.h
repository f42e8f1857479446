// SPDX-License-Identifier: MIT
// One attribute of one object as Max tells it: its value and its properties.
//
// All code that lists, stores or documents attributes uses this, for objects of any class. Where
// Max reports an error, it is posted on the object's console row and the result is empty.
#pragma once

#include "max/VelkMaxAtoms.h"

#include <optional>

namespace VelkMax {

/// The name of an error code of Max.
const char* ErrorText(t_max_err error) noexcept;

/// Owns atoms that Max allocated, and frees them.
class OwnedAtoms {
public:
    OwnedAtoms() = default;
    ~OwnedAtoms() { sysmem_freeptr(atoms_); }
    OwnedAtoms(OwnedAtoms&& other) noexcept;
    OwnedAtoms& operator=(OwnedAtoms&&) = delete;

    /// The two addresses at which Max writes its answer.
    max_long* CountPlace() noexcept { return &count_; }
    t_atom** AtomsPlace() noexcept { return &atoms_; }

    max_long Count() const noexcept { return count_; }
    bool IsValid() const noexcept { return count_ == 0 || (count_ > 0 && atoms_ != nullptr); }
    Atoms View() const { return Atoms(count_, atoms_); }
    std::span<t_atom> Span() const {
        return {atoms_, atoms_ != nullptr && count_ > 0 ? static_cast<std::size_t>(count_) : 0};
    }

private:
    max_long count_ = 0;
    t_atom* atoms_ = nullptr;
};

/// Reads the value of an attribute.
/// @param x  an object; or an attribute, then `name` is one of its properties
struct AttributeValue {
    AttributeValue(void* x, t_symbol* name);

    OwnedAtoms atoms;
    t_max_err error;
};

/// Thread: main or scheduler.  Throws: std::bad_alloc.
class MaxAttribute {
public:
    /// @param owner  an object; or an attribute, then `name` is one of its properties
    /// @param console  the object on whose console row errors are posted; null: `owner`
    MaxAttribute(void* owner, t_symbol* name, t_object* console = nullptr);

    bool Exists() const noexcept { return attribute_ != nullptr; }
    t_symbol* Name() const noexcept { return name_; }
    const char* Text() const noexcept { return name_->s_name; }
    /// The attribute as an object, whose attributes are its properties.
    void* Object() const noexcept { return attribute_; }
    MaxAttribute Property(const char* name) const;
    std::vector<MaxAttribute> Properties() const;

    /// The property "order", the place in the inspector; empty when there is none.
    std::optional<max_long> GetOrder() const;
    std::vector<t_symbol*> GetEnumChoices() const;
    /// The value as a message box shows it.
    std::string GetValueOf() const;
    bool IsInvisible() const;
    /// Whether a message may set the attribute.
    bool CanBeSet() const;
    bool CanBeRead() const;
    bool CanBeReset() const;
    std::size_t NumAtoms() const;
    /// "int", "float", "symbol" or "unknown".
    const char* TypeText() const;

private:
    void* owner_;
    t_symbol* name_;
    t_object* console_;
    void* attribute_;
};

/// The visible attributes that a message may set and that have a value. Sorted by "order" (1, 2,
/// ..., then those without, then ..., -2, -1), equal ones by name.
std::vector<MaxAttribute> ListAttributes(t_object* object);

/// Sets an attribute from its property "default".
void ResetAttributeToDefault(t_object* object, const char* name);

/// Sets an attribute; posts the error when Max refuses. Allocates no memory of its own.
/// @param atoms  may be changed by the filters of the attribute
void SetAttribute(t_object* object, t_symbol* name, std::span<t_atom> atoms) noexcept;

/// Whether the atom is a long, a float or a symbol.
bool IsPlainAtom(const t_atom& atom) noexcept;

}  // namespace VelkMax
