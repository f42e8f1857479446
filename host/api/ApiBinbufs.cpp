// SPDX-License-Identifier: MIT
// Binbufs, and the one that stands under the symbol "_preset" while a preset is stored.
#include "ApiAtomText.h"
#include "ApiFaults.h"
#include "ApiObjects.h"
#include "HostBridge.h"

#include <utility>

namespace HostApi {
namespace {

struct Binbuf {
    t_object ob;
    std::vector<t_atom> atoms;  // A_SEMI ends each message

    static Binbuf* FromObject(t_object* object) { return reinterpret_cast<Binbuf*>(object); }
};

Class& BinbufClass() {
    static Class& type = OwnClass<Binbuf>("binbuf");
    return type;
}

Binbuf* AsBinbuf(void* pointer) { return AsOwn<Binbuf>(BinbufClass, pointer); }

void Add(void* pointer, short argc, const t_atom* argv, bool ends) {
    Binbuf* const binbuf = AsBinbuf(pointer);
    if (!binbuf) return;
    const auto added = Atoms(argc, argv);
    binbuf->atoms.insert(binbuf->atoms.end(), added.begin(), added.end());
    if (ends) binbuf->atoms.push_back({A_SEMI, {}});
}

}  // namespace

std::vector<PresetRecord> StorePreset(t_object* object) {
    auto* const binbuf = static_cast<Binbuf*>(binbuf_new());
    t_symbol* const place = gensym("_preset");
    t_object* const before = std::exchange(place->s_thing, &binbuf->ob);
    DeliverMessage(object, 0, gensym("preset"), {});
    place->s_thing = before;
    std::vector<PresetRecord> records(1);
    for (const t_atom& atom : binbuf->atoms) {
        if (atom.a_type == A_SEMI) {
            records.emplace_back();
        } else {
            records.back().push_back(atom);
        }
    }
    if (records.back().empty()) records.pop_back();
    object_free(binbuf);
    return records;
}

}  // namespace HostApi

using namespace HostApi;

void* binbuf_new() {
    if (InjectedFailure("binbuf_new")) return nullptr;
    auto* const binbuf = new Binbuf{};
    AdoptObject(&binbuf->ob, BinbufClass());
    return binbuf;
}

void binbuf_insert(t_binbuf* b, t_symbol*, short argc, t_atom* argv) { Add(b, argc, argv, true); }

void binbuf_append(t_binbuf* b, t_symbol*, short argc, t_atom* argv) { Add(b, argc, argv, false); }

short binbuf_getatom(t_binbuf* b, max_long* p1, max_long* p2, t_atom* out) {
    const Binbuf* binbuf = AsBinbuf(b);
    if (!binbuf || *p1 < 0 || static_cast<std::size_t>(*p1) >= binbuf->atoms.size()) return 1;
    *out = binbuf->atoms[static_cast<std::size_t>(*p1)];
    *p2 = ++*p1;
    return 0;
}
