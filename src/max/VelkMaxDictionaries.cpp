// SPDX-License-Identifier: MIT
#include "max/VelkMaxDictionaries.h"

#include "max/VelkMaxFiles.h"
#include "max/VelkMaxHandlers.h"
#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxRestoring.h"
#include "max/VelkMaxState.h"
#include "max/VelkMaxStateTexts.h"
#include "max/VelkMaxSymbols.h"

#include <algorithm>
#include <memory>

namespace VelkMax {

namespace {

constexpr t_fourcc kJson = FileType("JSON");

struct FreeObject {
    void operator()(t_dictionary* dictionary) const { object_free(dictionary); }
};
struct ReleaseReference {
    void operator()(t_dictionary* dictionary) const { dictobj_release(dictionary); }
};
using OwnedDictionary = std::unique_ptr<t_dictionary, FreeObject>;
using RetainedDictionary = std::unique_ptr<t_dictionary, ReleaseReference>;

// ---- Writing

/// Adds the value of one attribute as an entry of the type that fits its atoms.
void AppendAttribute(t_dictionary* dictionary, t_object* object, t_symbol* name) {
    AttributeValue value(object, name);
    if (value.error != MAX_ERR_NONE) {
        return Bug(object, kAppendUnread, ErrorText(value.error), name->s_name);
    }
    const Atoms atoms = value.atoms.View();
    if (!std::ranges::all_of(atoms.Span(), IsPlainAtom)) return Error(object, kAppendUnknownAtom);
    if (atoms.Size() > 1) {
        dictionary_appendatoms(dictionary, name, value.atoms.Count(), *value.atoms.AtomsPlace());
    } else if (atoms.IsLong(0)) {
        dictionary_appendlong(dictionary, name, atoms.Long(0));
    } else if (atoms.IsNumber(0)) {
        dictionary_appendfloat(dictionary, name, atoms.Float(0));
    } else if (atoms.IsSymbol(0)) {
        dictionary_appendsym(dictionary, name, atoms.Symbol(0));
    }
}

void AppendAll(t_dictionary* dictionary, t_object* object) {
    for (const MaxAttribute& attribute : ListAttributes(object)) {
        AppendAttribute(dictionary, object, attribute.Name());
    }
}

// ---- Reading

/// Reads the atoms of an entry; a text becomes a symbol.
/// @return Max's error. The atoms may be of kinds that attributes do not have, such as objects.
t_max_err ReadAtoms(t_dictionary* dictionary, t_symbol* key, std::vector<t_atom>& atoms) {
    if (dictionary_entryisstring(dictionary, key) != 0) {
        const char* text = nullptr;
        const t_max_err error = dictionary_getstring(dictionary, key, &text);
        if (error == MAX_ERR_NONE) atom_setsym(&atoms.emplace_back(), gensym(text));
        return error;
    }
    OwnedAtoms entry;
    const t_max_err error =
        dictionary_copyatoms(dictionary, key, entry.CountPlace(), entry.AtomsPlace());
    if (error == MAX_ERR_NONE) atoms.assign(entry.Span().begin(), entry.Span().end());
    return error;
}

/// The errors that are posted about entries that cannot be used.
struct EntryTexts {
    const Text<const char*>& noEntry;
    const Text<const char*>& noAtom;
};
constexpr EntryTexts kDictionaryTexts{kNoEntry, kEntryNoAtom};
constexpr EntryTexts kCreationTexts{kCreationNoEntry, kCreationEntryUnread};

/// Values of attributes. All are read before the first is set, so that a lack of memory changes
/// none.
class Entries {
public:
    Entries(t_object* object, t_dictionary* dictionary, const EntryTexts& texts)
        : object_(object),
          dictionary_(dictionary),
          texts_(texts) {}

    /// Reads one entry; posts an error and leaves it out when it cannot be used.
    void Read(t_symbol* key) {
        std::vector<t_atom> atoms;
        if (ReadAtoms(dictionary_, key, atoms) != MAX_ERR_NONE) {
            Error(object_, texts_.noEntry, key->s_name);
        } else if (!std::ranges::all_of(atoms, IsPlainAtom)) {
            Error(object_, texts_.noAtom, key->s_name);
        } else {
            entries_.push_back({key, std::move(atoms)});
        }
    }
    void SetAttributes() {
        const RestoringState restoring(RestoringState::By::Message);
        for (Entry& entry : entries_) SetAttribute(object_, entry.key, entry.atoms);
    }

private:
    struct Entry {
        t_symbol* key;
        std::vector<t_atom> atoms;
    };
    t_object* object_;
    t_dictionary* dictionary_;
    const EntryTexts& texts_;
    std::vector<Entry> entries_;
};

bool ApplyDictionary(t_object* object, t_dictionary* dictionary) {
    const DictionaryKeys keys(dictionary);
    if (!keys.IsRead()) return false;
    Entries entries(object, dictionary, kDictionaryTexts);
    for (t_symbol* key : keys.View()) {
        if (object_attr_get(object, key) == nullptr) {
            Error(object, kNoAttribute, key->s_name);
        } else {
            entries.Read(key);
        }
    }
    entries.SetAttributes();
    return true;
}

// ---- Files

void ReadPlace(t_object* object, const FilePlace& place) {
    t_dictionary* read = nullptr;
    const t_max_err error = dictionary_read(place.name.c_str(), place.folder, &read);
    const OwnedDictionary dictionary(read);
    if (error == MAX_ERR_NONE && read != nullptr && ApplyDictionary(object, read)) return;
    Error(object, kDictionaryUnparsed, place.name.c_str());
}

void AskAndExport(void* x, t_symbol*, Atoms) noexcept {
    auto* const object = static_cast<t_object*>(x);
    Guarded(object, &object_error, [&] {
        const auto place = AskWhereToSave("file.json", kJson);
        if (!place) return;
        const OwnedDictionary dictionary(dictionary_new());
        if (dictionary == nullptr) throw std::bad_alloc();
        AppendAll(dictionary.get(), object);
        const t_max_err error =
            dictionary_write(dictionary.get(), place->name.c_str(), place->folder);
        if (error != MAX_ERR_NONE) Error(object, kNotWritten, FullPath(*place).c_str());
    });
}

void AskAndRead(void* x, t_symbol*, Atoms) noexcept {
    auto* const object = static_cast<t_object*>(x);
    Guarded(object, &object_error, [&] {
        if (const auto place = AskForFile({&kJson, 1})) ReadPlace(object, *place);
    });
}

void ReadNamed(void* x, t_symbol* name, Atoms) noexcept {
    auto* const object = static_cast<t_object*>(x);
    Guarded(object, &object_error, [&] {
        if (const auto place = LocateFile(name->s_name)) return ReadPlace(object, *place);
        Error(object, kNotLocated, name->s_name);
    });
}

}  // namespace

// ---- The dictionary of an object

KeptDictionary::~KeptDictionary() {
    if (dictionary_ != nullptr) object_free(dictionary_);
}

t_dictionary* KeptDictionary::Get() {
    if (dictionary_ != nullptr) return dictionary_;
    OwnedDictionary made(dictionary_new());
    if (made == nullptr) return nullptr;
    t_symbol* name = nullptr;
    t_dictionary* const registered = dictobj_register(made.get(), &name);
    if (registered == nullptr) return nullptr;
    made.release();  // NOLINT(bugprone-unused-return-value): Max owns it now
    name_ = name;
    return dictionary_ = registered;
}

// ---- Messages

void DumpDictMessage(const ObjectParts& object, Atoms atoms) {
    t_object* const outlet = DumpOutlet(object.header);
    if (outlet == nullptr) return;
    for (std::size_t index = 0; index < atoms.Size(); ++index) {
        if (!atoms.IsSymbol(index)) return Reject(object, kInvalidDumpDict, atoms);
    }
    t_dictionary* const dictionary = object.dictionary.Get();
    if (dictionary == nullptr) return Error(object, kNotOutlet);
    dictionary_clear(dictionary);
    if (atoms.Empty()) AppendAll(dictionary, object.header);
    for (std::size_t index = 0; index < atoms.Size(); ++index) {
        AppendAttribute(dictionary, object.header, atoms.Symbol(index));
    }
    object_notify(dictionary, Symbols().modified, nullptr);
    t_atom atom{};
    atom_setsym(&atom, object.dictionary.Name());
    // The result is not used: it is no error when no cord is connected.
    outlet_anything(outlet, Symbols().dictionary, 1, &atom);
}

void DictionaryMessage(t_object* object, t_symbol* name) {
    const RetainedDictionary dictionary(dictobj_findregistered_retain(name));
    if (dictionary == nullptr) return Error(object, kNoDictionary, name->s_name);
    if (!ApplyDictionary(object, dictionary.get())) {
        Error(object, kDictionaryUnparsed, name->s_name);
    }
}

void ExportDictMessage(const ObjectParts& object) { object.door.SendToMain({&AskAndExport}); }

void ReadDictMessage(const ObjectParts& object, t_symbol* name) {
    if (name->s_name[0] == '\0') return object.door.SendToMain({&AskAndRead});
    object.door.Enter({&ReadNamed, Letter::Pace::InMain, name});
}

// ---- Creation

CreationDictionary::CreationDictionary(t_object* object,
                                       std::span<t_atom> arguments,
                                       std::span<const char* const> needed)
    : object_(object),
      dictionary_(object_dictionaryarg(static_cast<max_long>(arguments.size()), arguments.data())) {
    if (!IsGiven()) return;
    for (const char* name : needed) {
        if (dictionary_hasentry(dictionary_, gensym(name)) == 0) {
            Warn(object_, kCreationNoEntry, name);
        }
    }
}

bool CreationDictionary::SetKnown() {
    if (!IsGiven()) return true;
    const DictionaryKeys keys(dictionary_);
    if (!keys.IsRead()) {
        Error(object_, kCreationUnparsed);
        Error(object_, kCreationUnprocessed);
        return false;
    }
    Entries entries(object_, dictionary_, kCreationTexts);
    for (t_symbol* key : keys.View()) {
        const bool isDone = std::ranges::find(done_, key) != done_.end();
        if (isDone || object_attr_get(object_, key) == nullptr) continue;
        done_.push_back(key);
        entries.Read(key);
    }
    entries.SetAttributes();
    return true;
}

void CreationDictionary::ReportUnknown() const {
    if (IsGiven()) attr_dictionary_check(object_, dictionary_);
}

}  // namespace VelkMax
