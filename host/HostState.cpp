// SPDX-License-Identifier: MIT
#include "HostState.h"

#include "HostConsole.h"
#include "HostFault.h"
#include "HostOutputFile.h"

#include <filesystem>

namespace Quilo::Host {

namespace {

std::string WordAt(std::span<const Atom> words, std::size_t at) {
    return at < words.size() ? AtomSpelling(words[at]) : "";
}

void AppendValues(t_dictionary* d, t_symbol* key, std::vector<t_atom> values) {
    if (values.empty()) {
        dictionary_deleteentry(d, key);
    } else if (values.size() == 1) {
        dictionary_appendatom(d, key, values.data());
    } else {
        dictionary_appendatoms(d, key, static_cast<max_long>(values.size()), values.data());
    }
}

std::string FullPath(const std::string& file) {
    const std::u8string text = std::filesystem::absolute(PathOf(file)).generic_u8string();
    return {text.begin(), text.end()};
}

}  // namespace

State::State(Object& object, Console& console) : object_(object), console_(console) {
    console.SetDictionarySink([this](t_symbol* name) { Receive(name); });
}

State::~State() {
    console_.SetDictionarySink({});
    for (const auto& [name, dictionary] : dictionaries_) object_free(dictionary);
}

void State::Preset(std::span<const Atom> words) {
    const std::string what = WordAt(words, 0);
    const auto slot = std::get<std::int64_t>(words[1]);
    if (what == "store") {
        presets_[slot] = HostApi::StorePreset(object_.Get());
        return;
    }
    const auto found = presets_.find(slot);
    if (found == presets_.end()) throw StatementFault("nothing is stored there");
    for (const HostApi::PresetRecord& record : found->second) {
        if (what == "print") {
            console_.Write("preset " + std::to_string(slot),
                           HostApi::AtomText(std::span(record).subspan(1)));
        } else if (record.size() >= 3) {
            HostApi::DeliverMessage(object_.Get(), 0, atom_getsym(&record[2]),
                                    std::span(record).subspan(3));
        }
    }
}

void State::Pattr(std::span<const Atom> words) {
    const std::string what = WordAt(words, 0);
    if (what == "get") {
        max_long argc = 0;
        t_atom* argv = nullptr;
        if (object_getvalueof(object_.Get(), &argc, &argv) == MAX_ERR_NONE && argv)
            pattr_.assign(argv, argv + argc);
        sysmem_freeptr(argv);
    } else if (what == "set") {
        std::vector<t_atom> values = words.size() > 1 ? ApiAtoms(words.subspan(1)) : pattr_;
        object_setvalueof(object_.Get(), static_cast<max_long>(values.size()), values.data());
    } else if (what == "cut") {
        const auto count = static_cast<std::size_t>(std::get<std::int64_t>(words[1]));
        if (count > pattr_.size()) throw StatementFault("there are fewer values");
        pattr_.resize(pattr_.size() - count);
    } else {
        console_.Write("pattr", HostApi::AtomText(pattr_));
    }
}

t_dictionary* State::Named(const std::string& name) {
    t_dictionary*& known = dictionaries_[name];
    t_symbol* symbol = gensym(name.c_str());
    if (!known) known = dictobj_register(dictionary_new(), &symbol);
    return known;
}

void State::Dictionary(std::span<const Atom> words) {
    const std::string name = WordAt(words, 0), what = WordAt(words, 1), third = WordAt(words, 2);
    t_dictionary* const d = Named(name);
    if (what == "set") {
        AppendValues(d, gensym(third.c_str()), ApiAtoms(words.subspan(3)));
    } else if (what == "clear") {
        dictionary_clear(d);
    } else if (what == "read") {
        t_dictionary* read = nullptr;
        if (dictionary_read(FullPath(third).c_str(), 0, &read) != MAX_ERR_NONE)
            throw StatementFault(third + ": no dictionary can be read");
        object_free(dictionaries_[name]);
        t_symbol* symbol = gensym(name.c_str());
        dictionaries_[name] = dictobj_register(read, &symbol);
    } else if (what == "write") {
        if (dictionary_write(d, FullPath(third).c_str(), 0) != MAX_ERR_NONE)
            throw StatementFault(third + ": cannot be written");
    } else {
        max_long count = 0;
        t_symbol** keys = nullptr;
        dictionary_getkeys_ordered(d, &count, &keys);
        for (max_long k = 0; k < count; ++k) {
            max_long argc = 0;
            t_atom* argv = nullptr;
            dictionary_getatoms(d, keys[k], &argc, &argv);
            console_.Write("dictionary " + name + " " + keys[k]->s_name,
                           HostApi::AtomText(std::span(argv, static_cast<std::size_t>(argc))));
        }
        dictionary_freekeys(d, count, keys);
    }
}

void State::Receive(t_symbol* name) {
    t_dictionary* const copy = dictobj_findregistered_clone(name);
    if (!copy) return;
    t_symbol* symbol = gensym("received");
    t_dictionary*& known = dictionaries_[symbol->s_name];
    if (known) object_free(known);
    known = dictobj_register(copy, &symbol);
}

}  // namespace Quilo::Host
