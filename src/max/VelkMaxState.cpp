// SPDX-License-Identifier: MIT
#include "max/VelkMaxState.h"

#include "max/VelkMaxHandlers.h"
#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxRestoring.h"
#include "max/VelkMaxStateTexts.h"
#include "max/VelkMaxSymbols.h"

#include <algorithm>
#include <limits>

namespace VelkMax {

namespace {

constexpr std::size_t kMostAtoms =
    std::numeric_limits<short>::max();  // largest number of a message's atoms

/// The texts that are posted when a value cannot be read.
struct ReadTexts {
    const Text<const char*, const char*>& unread;
    const Text<const char*, long>* invalid;
    const Text<>& unknownAtom;
};
constexpr ReadTexts kDumpTexts{kDumpUnread, nullptr, kDumpUnknownAtom};
constexpr ReadTexts kDumpAllTexts{kDumpAllUnread, nullptr, kDumpUnknownAtom};
constexpr ReadTexts kStateTexts{kStateUnread, &kStateInvalid, kStateUnknownAtom};

/// Values of attributes in one list.
struct Values {
    struct Slice {
        t_symbol* name;
        std::size_t count;
    };
    std::vector<t_atom> atoms;
    std::vector<Slice> slices;  // an attribute that could not be read has none
    std::size_t numCounted = 0;
};

/// Appends one value; posts an error for what cannot be stored and leaves it out.
void Append(t_object* object, const MaxAttribute& attribute, const ReadTexts& texts, Values& out) {
    const AttributeValue value(object, attribute.Name());
    if (value.error != MAX_ERR_NONE) {
        return Bug(object, texts.unread, ErrorText(value.error), attribute.Text());
    }
    if (!value.atoms.IsValid() && texts.invalid != nullptr) {
        return Bug(object, *texts.invalid, attribute.Text(), long{value.atoms.Count()});
    }
    const std::size_t before = out.atoms.size();
    for (const t_atom& atom : value.atoms.View().Span()) {
        if (IsPlainAtom(atom)) {
            out.atoms.push_back(atom);
        } else {
            Error(object, texts.unknownAtom);
        }
    }
    out.slices.push_back({attribute.Name(), out.atoms.size() - before});
}

/// @param mismatch  the warning when fewer or more atoms were read than were counted
Values Gather(t_object* object,
              std::span<const MaxAttribute> attributes,
              const ReadTexts& texts,
              const Text<int, int>& mismatch) {
    Values values;
    for (const MaxAttribute& attribute : attributes) values.numCounted += attribute.NumAtoms();
    values.atoms.reserve(values.numCounted);
    for (const MaxAttribute& attribute : attributes) Append(object, attribute, texts, values);
    if (values.atoms.size() != values.numCounted) {
        Warn(object, mismatch, static_cast<int>(values.numCounted),
             static_cast<int>(values.atoms.size()));
    }
    return values;
}

Values GatherState(t_object* object) {
    return Gather(object, ListAttributes(object), kStateTexts, kStoredCountDiffers);
}

/// The attributes that a message names: all listed ones without arguments, else the one named.
/// Posts `refusal` for any other arguments and returns none.
std::vector<MaxAttribute> Requested(t_object* object, Atoms atoms, const Text<>& refusal) {
    if (atoms.Empty()) return ListAttributes(object);
    if (atoms.Size() != 1 || !atoms.IsSymbol(0)) {
        Reject(object, refusal, atoms);
        return {};
    }
    const MaxAttribute attribute(object, atoms.Symbol(0));
    if (attribute.Exists()) return {attribute};
    Error(object, kNoAttribute, attribute.Text());
    return {};
}

void PostValueOfAttribute(t_object* object, const MaxAttribute& attribute) {
    const AttributeValue value(object, attribute.Name());
    if (value.error != MAX_ERR_NONE) {
        return Bug(object, kPostUnread, ErrorText(value.error), attribute.Text());
    }
    const std::string text = value.atoms.View().Text();
    Post(object, kAttributeLine, attribute.Text(), text.c_str());
}

/// Sets the listed attributes from a state, each from its share of the atoms. When the number of
/// atoms differs, posts an error and changes nothing.
void RestoreState(t_object* object, Atoms atoms, RestoringState::By by) {
    struct Share {
        MaxAttribute attribute;
        std::size_t count;
    };
    std::vector<Share> shares;
    std::size_t expected = 0;
    for (const MaxAttribute& attribute : ListAttributes(object)) {
        shares.push_back({attribute, attribute.NumAtoms()});
        expected += shares.back().count;
    }
    if (atoms.Size() != expected) {
        return Error(object, kStateCountDiffers, static_cast<int>(atoms.Size()),
                     static_cast<int>(expected));
    }
    // Copied before anything is set, so that a lack of memory leaves all attributes as they are.
    std::vector<t_atom> copy(atoms.Span().begin(), atoms.Span().end());
    std::span<t_atom> rest = copy;
    const RestoringState restoring(by);
    for (const Share& share : shares) {
        const std::span<t_atom> values = rest.first(share.count);
        rest = rest.subspan(share.count);
        if (std::ranges::all_of(values, IsPlainAtom)) {
            SetAttribute(object, share.attribute.Name(), values);
        } else {
            Error(object, kRestoredUnknownAtom);
        }
    }
}

t_max_err HandOutState(t_object* object, max_long* argc, t_atom** argv) {
    if (argc == nullptr || argv == nullptr) {
        Error(object, kStateProblem);
        return MAX_ERR_INVALID_PTR;
    }
    const bool isPassedIn = *argc > 0 && *argv != nullptr;
    if (isPassedIn) Warn(object, kMemoryPassedIn);
    const Values state = GatherState(object);
    const auto count = static_cast<max_long>(state.atoms.size());
    if (count == 0 || (isPassedIn && *argc < count)) {
        Error(object, kStateProblem);
        return MAX_ERR_GENERIC;
    }
    if (ReserveAnswer(state.atoms.size(), argc, argv) != MAX_ERR_NONE) throw std::bad_alloc();
    std::ranges::copy(state.atoms, *argv);
    return MAX_ERR_NONE;
}

}  // namespace

void PostAttributesMessage(t_object* object, Atoms atoms) {
    const auto attributes = Requested(object, atoms, kInvalidPostAttributes);
    if (atoms.Empty()) Post(object, kFoundAttributes, static_cast<int>(attributes.size()));
    for (const MaxAttribute& attribute : attributes) PostValueOfAttribute(object, attribute);
}

void DumpMessage(t_object* object, Atoms atoms) {
    t_object* const outlet = DumpOutlet(object);
    if (outlet == nullptr) return;
    Values values = Gather(object, Requested(object, atoms, kInvalidDump),
                           atoms.Empty() ? kDumpAllTexts : kDumpTexts, kDumpCountDiffers);
    t_atom* next = values.atoms.data();
    for (const Values::Slice& slice : values.slices) {
        outlet_anything(outlet, slice.name, static_cast<short>(std::min(slice.count, kMostAtoms)),
                        next);
        next += slice.count;
    }
}

void PresetMessage(t_object* object) {
    t_object* const binbuf = Symbols().preset->s_thing;
    if (binbuf == nullptr) return Error(object, kNoPreset);
    std::vector<t_atom> record(3);
    atom_setobj(&record[0], object);
    atom_setsym(&record[1], object_classname(object));
    atom_setsym(&record[2], Symbols().recallPreset);
    const Values state = GatherState(object);
    record.insert(record.end(), state.atoms.begin(), state.atoms.end());
    if (record.size() > kMostAtoms) return Error(object, kNoPreset);
    binbuf_insert(binbuf, nullptr, static_cast<short>(record.size()), record.data());
}

void RecallPresetMessage(t_object* object, Atoms atoms) {
    RestoreState(object, atoms, RestoringState::By::Message);
}

void VersionMessage(t_object* object) {
    if (!MaxAttribute(object, gensym("externalversion")).Exists()) {
        return Error(object, kNoVersion);
    }
    const std::string version = VersionText(object);
    Post(object, kVersionLine, version.empty() ? "unknown version" : version.c_str());
}

t_max_err GetValueOfMethod(void* x, max_long* argc, t_atom** argv) noexcept {
    auto* const object = static_cast<t_object*>(x);
    t_max_err error = MAX_ERR_GENERIC;
    Guarded(
        object, &object_error, [&] { error = HandOutState(object, argc, argv); },
        [&](const char* what) {
            Error(object, kOutOfMemory, what);
            error = MAX_ERR_OUT_OF_MEM;
        });
    return error;
}

t_max_err SetValueOfMethod(void* x, max_long argc, t_atom* argv) noexcept {
    auto* const object = static_cast<t_object*>(x);
    const bool isDone = Guarded(object, &object_error, [&] {
        if (argc > 0 && argv == nullptr) return Error(object, kStateUnreadable);
        RestoreState(object, Atoms(argc, argv), RestoringState::By::Client);
    });
    return isDone ? MAX_ERR_NONE : MAX_ERR_GENERIC;
}

t_object* DumpOutlet(t_object* object) {
    t_object* outlet = nullptr;
    object_obex_lookup(object, Symbols().dumpout, &outlet);
    if (outlet == nullptr) Error(object, kNoDumpOutlet);
    return outlet;
}

std::string VersionText(t_object* object) {
    const MaxAttribute version(object, gensym("externalversion"));
    if (!version.Exists() || !version.Property("label").Exists()) return {};
    return version.Property("label").GetValueOf();
}

}  // namespace VelkMax
