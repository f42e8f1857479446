// SPDX-License-Identifier: MIT
// Inlets and outlets. Messages from outlets go to the host's sink.
#include "ApiOutlets.h"

#include "ApiAtomText.h"
#include "ApiCallWatch.h"
#include "ApiFaults.h"
#include "ApiObjects.h"
#include "ApiSink.h"
#include "HostBridge.h"

#include <algorithm>
#include <string_view>

namespace HostApi {
namespace {

/// Never destroyed: modules may send while the program ends.
Sink<OutletSink>& TheOutletSink() {
    static auto& outlets = *new Sink<OutletSink>;
    return outlets;
}

thread_local const t_object* currentObject = nullptr;
thread_local max_long currentInlet = 0;

Class& OutletClass() {
    static Class& type = OwnClass<Outlet>("outlet");
    return type;
}

Class& ProxyClass() {
    static Class& type = OwnClass<Proxy>("proxy");
    return type;
}

Outlet* AsOutlet(void* pointer) { return AsOwn<Outlet>(OutletClass, pointer); }

/// Whether an outlet's type allows a message; posts an error if not.
bool Accepts(const Outlet& outlet, const t_symbol* selector) {
    const std::string_view type = outlet.type->s_name;
    if (type.empty() || type == selector->s_name) return true;
    object_error(outlet.owner, "outlet of type \"%s\" does not send \"%s\"", outlet.type->s_name,
                 selector->s_name);
    return false;
}

void* Send(void* pointer, t_symbol* selector, std::span<const t_atom> atoms) {
    NoteCall("outlet_anything");
    RefusePerform("outlet_anything");
    Outlet* const outlet = AsOutlet(pointer);
    if (!outlet || !Accepts(*outlet, selector)) return nullptr;
    const ObjectRecord& owner = *FindObject(outlet->owner);
    const auto place = std::ranges::find(owner.outlets, outlet) - owner.outlets.begin();
    t_object* dumpout = nullptr;
    object_obex_lookup(outlet->owner, gensym("dumpout"), &dumpout);
    TheOutletSink().Call(OutletMessage{outlet->owner,
                                       owner.outlets.size() - 1 - static_cast<std::size_t>(place),
                                       dumpout == outlet->Object(), selector, atoms});
    return pointer;
}

}  // namespace

void SetOutletSink(OutletSink sink) { TheOutletSink().Set(std::move(sink)); }

InletScope::InletScope(const t_object* object, std::size_t inlet)
    : previousObject_(currentObject),
      previousInlet_(currentInlet) {
    currentObject = object;
    currentInlet = static_cast<max_long>(inlet);
    const ObjectRecord* record = FindObject(object);
    if (record && inlet > 0 && inlet <= record->proxies.size()) {
        const Proxy& proxy = *record->proxies[record->proxies.size() - inlet];
        currentInlet = proxy.id;
        if (proxy.place) *proxy.place = proxy.id;
    }
}

InletScope::~InletScope() {
    currentObject = previousObject_;
    currentInlet = previousInlet_;
}

void SetSignalInlets(t_object* object, std::size_t count) {
    if (ObjectRecord* record = FindObject(object)) record->signalInlets = count;
}

std::vector<std::string> InletTypes(t_object* object) {
    const ObjectRecord* record = FindObject(object);
    if (!record) return {};
    std::vector<std::string> types(1 + record->proxies.size());
    for (std::size_t i = 0; i < types.size() && i < record->signalInlets; ++i) types[i] = "signal";
    return types;
}

std::vector<std::string> OutletTypes(t_object* object) {
    const ObjectRecord* record = FindObject(object);
    if (!record) return {};
    std::vector<std::string> types;
    types.reserve(record->outlets.size());
    for (const Outlet* outlet : record->outlets) types.emplace_back(outlet->type->s_name);
    std::ranges::reverse(types);  // they were made from right to left
    return types;
}

}  // namespace HostApi

using namespace HostApi;

void* outlet_new(void* x, const char* type) {
    ObjectRecord* owner = FindObject(x);
    if (!owner || InjectedFailure("outlet_new")) return nullptr;
    auto* const outlet = new Outlet{{}, static_cast<t_object*>(x), gensym(type)};
    AdoptObject(outlet->Object(), OutletClass());
    owner->outlets.push_back(outlet);
    outlet->owner->o_outlet = outlet->Object();
    return outlet->Object();
}

void* outlet_bang(t_outlet* o) { return Send(o, gensym("bang"), {}); }

void* outlet_int(t_outlet* o, t_atom_long v) {
    t_atom atom{};
    atom_setlong(&atom, v);
    return Send(o, gensym("int"), {&atom, 1});
}

void* outlet_float(t_outlet* o, double v) {
    t_atom atom{};
    atom_setfloat(&atom, v);
    return Send(o, gensym("float"), {&atom, 1});
}

void* outlet_list(t_outlet* o, t_symbol*, short argc, t_atom* argv) {
    return Send(o, gensym("list"), Atoms(argc, argv));
}

void* outlet_anything(t_outlet* o, t_symbol* s, short argc, t_atom* argv) {
    if (!s || InjectedFailure("outlet_anything")) return nullptr;
    return Send(o, s, Atoms(argc, argv));
}

void object_obex_dumpout(void* x, t_symbol* s, max_long argc, t_atom* argv) {
    t_object* outlet = nullptr;
    if (object_obex_lookup(x, gensym("dumpout"), &outlet) != MAX_ERR_NONE || !outlet) return;
    outlet_anything(outlet, s, static_cast<short>(std::clamp(argc, max_long{0}, max_long{32767})),
                    argv);
}

void outlet_atoms(void* o, short argc, t_atom* argv) {
    const auto atoms = Atoms(argc, argv);
    if (atoms.empty()) {
        outlet_bang(o);
    } else if (atoms[0].a_type == A_SYM) {
        Send(o, atoms[0].a_w.w_sym, atoms.subspan(1));
    } else if (atoms.size() > 1) {
        Send(o, gensym("list"), atoms);
    } else {
        Send(o, gensym(atoms[0].a_type == A_FLOAT ? "float" : "int"), atoms);
    }
}

max_long outlet_count(t_object* x) {
    const ObjectRecord* record = FindObject(x);
    return record ? static_cast<max_long>(record->outlets.size()) : 0;
}

void* outlet_nth(t_object* x, max_long n) {
    const ObjectRecord* record = FindObject(x);
    if (!record || n < 0 || static_cast<std::size_t>(n) >= record->outlets.size()) return nullptr;
    return record->outlets[record->outlets.size() - 1 - static_cast<std::size_t>(n)]->Object();
}

void* proxy_new(void* x, max_long id, max_long* stuffloc) {
    ObjectRecord* owner = FindObject(x);
    if (!owner) return nullptr;
    auto* const proxy = new Proxy{{}, id, stuffloc};
    AdoptObject(proxy->Object(), ProxyClass());
    owner->proxies.push_back(proxy);
    return proxy->Object();
}

max_long proxy_getinlet(t_object* x) { return x == currentObject ? currentInlet : 0; }

max_long inlet_count(t_object* x) {
    const ObjectRecord* record = FindObject(x);
    return record ? static_cast<max_long>(1 + record->proxies.size()) : 0;
}

void stdinletinfo(t_object*, void*, max_long index, char* cold) {
    if (index > 0) *cold = 1;
}
