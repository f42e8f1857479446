// SPDX-License-Identifier: MIT
#include "MaxApiProbe.h"

#include <utility>

namespace {

std::vector<std::string> heard;

std::string Text(max_long argc, const t_atom* argv) {
    return HostApi::AtomText(std::span(argv, static_cast<std::size_t>(argc)));
}

void Nothing(Probe*) { heard.emplace_back("nothing"); }
void Longs(Probe*, t_atom_long a, t_atom_long b) {
    heard.push_back("longs " + std::to_string(a) + " " + std::to_string(b));
}
void Mixed(Probe*, double a, t_symbol* s, double b, t_atom_long c) {
    t_atom atoms[4];
    atom_setfloat(&atoms[0], a);
    atom_setsym(&atoms[1], s);
    atom_setfloat(&atoms[2], b);
    atom_setlong(&atoms[3], c);
    heard.push_back("mixed " + Text(4, atoms));
}
void Optional(Probe* x, double a, t_atom_long b, t_symbol* s) { Mixed(x, a, s, 0, b); }
void Raw(Probe* x, t_symbol* s, max_long argc, t_atom* argv) {
    heard.push_back(std::string("raw ") + s->s_name + " (" + Text(argc, argv) + ") inlet " +
                    std::to_string(proxy_getinlet(&x->ob)));
}
void Number(Probe* x, t_atom_long v) {
    heard.push_back("int " + std::to_string(v) + " inlet " +
                    std::to_string(proxy_getinlet(&x->ob)));
}
void Real(Probe* x, double v) {
    t_atom atom{};
    atom_setfloat(&atom, v);
    heard.push_back("float " + Text(1, &atom) + " inlet " + std::to_string(proxy_getinlet(&x->ob)));
}
t_max_err SetMode(Probe* x, void*, max_long argc, t_atom* argv) {
    heard.push_back("set mode (" + Text(argc, argv) + ")");
    if (argc > 0) x->mode = static_cast<max_long>(atom_getlong(argv));
    return MAX_ERR_NONE;
}
t_max_err GetMode(Probe* x, void*, max_long* argc, t_atom** argv) {
    char allocated = 0;
    if (const t_max_err error = atom_alloc(argc, argv, &allocated)) return error;
    return atom_setlong(*argv, x->mode);
}
void Free(Probe*) { heard.emplace_back("freed"); }

void AddAttributes(t_class* type) {
    const auto place = [](auto Probe::*field) {
        static Probe origin{};
        return static_cast<max_long>(reinterpret_cast<char*>(&(origin.*field)) -
                                     reinterpret_cast<char*>(&origin));
    };
    class_addattr(type, attr_offset_new("mode", gensym("long"), 0, MaxApi::ToMethod(GetMode),
                                        MaxApi::ToMethod(SetMode), 0));
    class_addattr(
        type, attr_offset_new("gain", gensym("float32"), 0, nullptr, nullptr, place(&Probe::gain)));
    class_addattr(
        type, attr_offset_new("name", gensym("symbol"), 0, nullptr, nullptr, place(&Probe::name)));
    class_addattr(type, attr_offset_array_new("points", gensym("float64"), 4, 0, nullptr, nullptr,
                                              place(&Probe::numPoints), place(&Probe::points)));
    class_addattr(type, attr_offset_new("frozen", gensym("float64"), ATTR_SET_OPAQUE_USER, nullptr,
                                        nullptr, place(&Probe::frozen)));
    attr_addfilter_clip(class_attr_get(type, gensym("mode")), -2, 3, 1, 1);
    attr_addfilter_clip(class_attr_get(type, gensym("gain")), 0, 0, 1, 0);
    class_attr_addattr_parse(type, "gain", "order", gensym("long"), 0, "1");
}

t_class* ProbeClass() {
    static t_class* const type = [] {
        t_class* made = class_new("probe", nullptr, MaxApi::ToMethod(Free),
                                  static_cast<max_long>(sizeof(Probe)), nullptr, A_GIMME, 0);
        const auto add = [made](method function, const char* name, int a = 0, int b = 0, int c = 0,
                                int d = 0) {
            class_addmethod(made, function, name, a, b, c, d, 0);
        };
        add(MaxApi::ToMethod(Nothing), "nothing");
        add(MaxApi::ToMethod(Longs), "longs", A_LONG, A_LONG);
        add(MaxApi::ToMethod(Mixed), "mixed", A_FLOAT, A_SYM, A_FLOAT, A_LONG);
        add(MaxApi::ToMethod(Optional), "optional", A_FLOAT, A_DEFLONG, A_DEFSYM);
        add(MaxApi::ToMethod(Raw), "raw", A_GIMME);
        add(MaxApi::ToMethod(Raw), "later", A_DEFER_LOW);
        add(MaxApi::ToMethod(Raw), "lastonly", A_USURP_LOW);
        add(MaxApi::ToMethod(Nothing), "hidden", A_CANT);
        add(MaxApi::ToMethod(Number), "int", A_LONG);
        add(MaxApi::ToMethod(Real), "float", A_FLOAT);
        AddAttributes(made);
        class_dumpout_wrap(made);
        class_register(gensym("nobox"), made);
        return made;
    }();
    return type;
}

}  // namespace

void MaxApiTest::SetUp() {
    HostApi::SetConsoleSink([](HostApi::PostKind kind, std::string_view text, t_object*) {
        constexpr const char* kKinds[] = {"post: ", "error: ", "warn: ", "bug: "};
        heard.push_back(kKinds[static_cast<int>(kind)] + std::string(text));
    });
    HostApi::SetOutletSink([](const HostApi::OutletMessage& m) {
        heard.push_back("outlet " + std::to_string(m.outlet) + (m.isDumpout ? " dumpout" : "") +
                        ": " + m.selector->s_name + " " + HostApi::AtomText(m.atoms));
    });
    probe_ = static_cast<Probe*>(object_alloc(ProbeClass()));
    object_ = &probe_->ob;
    constexpr const char* kOutletTypes[] = {"signal", "int", nullptr};
    for (int i = 2; i >= 0; --i) probe_->outlets[i] = outlet_new(probe_, kOutletTypes[i]);
    object_obex_store(probe_, gensym("dumpout"), static_cast<t_object*>(probe_->outlets[2]));
    for (int id = 2; id >= 1; --id) proxy_new(probe_, id, nullptr);
    Take();
}

void MaxApiTest::TearDown() {
    if (!object_isnogood(object_)) object_free(object_);
    HostApi::RunDeferred();
    HostApi::SetConsoleSink({});
    HostApi::SetOutletSink({});
}

MaxApiTest::Lines MaxApiTest::Send(const std::string& words, std::size_t inlet) {
    const std::vector<t_atom> atoms = HostApi::ParseAtoms(words);
    HostApi::DeliverMessage(object_, inlet, atom_getsym(&atoms[0]), std::span(atoms).subspan(1));
    return Take();
}

MaxApiTest::Lines MaxApiTest::Take() { return std::exchange(heard, {}); }

void MaxApiTest::Say(const std::string& line) { heard.push_back(line); }
