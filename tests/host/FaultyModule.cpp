// SPDX-License-Identifier: MIT
// A module whose object makes the mistake that its box text names, to be caught by the validator.
#include "z_dsp.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <stdexcept>
#include <string_view>

namespace {

struct Faulty {
    t_pxobject ob;
    float gain;
    float heard;  // the gain in the sound
    double rateHz;
    void* dumpout;
    t_symbol* fault;
};

bool Is(const Faulty* x, std::string_view fault) { return fault == x->fault->s_name; }

void Perform(Faulty* x,
             t_object*,
             double** ins,
             max_long,
             double** outs,
             max_long,
             max_long frames,
             max_long,
             void*) {
    if (Is(x, "unwritten")) return;
    if (Is(x, "posting")) object_post(&x->ob.z_ob, "hello");
    const bool isNan = Is(x, "nan") || (Is(x, "nanfast") && x->rateHz > 200'000);
    const double factor = isNan                ? std::nan("")
                          : Is(x, "infinite")  ? 1e308 * 10
                          : Is(x, "soundless") ? 0
                                               : 1 - 0.5 * static_cast<double>(x->heard);
    const max_long written = Is(x, "partial") ? std::min<max_long>(frames, 64) : frames;
    std::transform(ins[0], ins[0] + written, outs[0],
                   [factor](double sample) { return factor * sample; });
}

void Dsp64(Faulty* x, t_object* chain, short*, double rateHz, max_long, max_long) {
    x->rateHz = rateHz;
    dsp_add64(chain, &x->ob.z_ob, reinterpret_cast<t_perfroutine64>(Perform), 0, nullptr);
}

void DspState(Faulty* x, max_long on) {
    if (Is(x, "telling")) object_post(&x->ob.z_ob, "dspstate %d", static_cast<int>(on));
}

void Touch(Faulty* x) {
    char* const block = sysmem_newptr(16);
    if (!block) return;
    if (Is(x, "hoarding")) sysmem_newptr(10);
    if (Is(x, "overrun")) block[16] = 1;
    sysmem_freeptr(block);
    if (Is(x, "twice")) sysmem_freeptr(block);
    if (Is(x, "late")) block[1] = 1;
    if (Is(x, "escaping")) throw std::runtime_error("escaped");
    std::array<char, MAX_PATH_CHARS> name{};
    short path = 0;
    if (Is(x, "dialog")) open_dialog(name.data(), &path, nullptr, nullptr, 0);
    if (Is(x, "dead")) {
        t_dictionary* const d = dictionary_new();
        object_free(d);
        object_notify(d, gensym("modified"), nullptr);
    }
}

void Assist(Faulty* x, void*, max_long, max_long, char* text) {
    if (Is(x, "wordy")) std::fill_n(text, ASSIST_MAX_STRING_LEN, 'w');
    if (Is(x, "wordy")) return;
    strncpy_zero(text, Is(x, "silent") ? "" : "help", ASSIST_MAX_STRING_LEN);
}

t_max_err GetGain(Faulty* x, void*, max_long* argc, t_atom** argv) {
    char allocated = 0;
    if (const t_max_err error = atom_alloc(argc, argv, &allocated)) return error;
    if (!Is(x, "uncounted")) *argc = 1;
    return atom_setfloat(*argv, static_cast<double>(x->gain));
}

t_max_err SetGain(Faulty* x, void*, max_long argc, t_atom* argv) {
    double gain = argc > 0 ? atom_getfloat(argv) : std::nan("");
    if (Is(x, "mainonly") && !systhread_ismainthread()) return MAX_ERR_NONE;
    if (Is(x, "drifting")) gain = 0.5 * gain + 0.2;
    if (!std::isnan(gain) || Is(x, "nanheld")) x->gain = static_cast<float>(gain);
    x->heard = x->gain;
    return MAX_ERR_NONE;
}

t_max_err GetValueOf(Faulty* x, max_long* argc, t_atom** argv) {
    char allocated = 0;
    if (const t_max_err error = atom_alloc(argc, argv, &allocated)) return error;
    *argc = 1;
    return atom_setfloat(*argv, static_cast<double>(x->gain));
}

t_max_err SetValueOf(Faulty* x, max_long argc, t_atom* argv) {
    if (argc != 1) return MAX_ERR_GENERIC;
    if (!Is(x, "forgetful")) x->gain = static_cast<float>(atom_getfloat(argv));
    if (!Is(x, "soundsother")) x->heard = x->gain;
    return MAX_ERR_NONE;
}

t_class*& FaultyClass() {
    static t_class* type = nullptr;
    return type;
}

void Free(Faulty* x) {
    if (!Is(x, "staying")) z_dsp_free(&x->ob);
}

void* New(t_symbol*, max_long argc, t_atom* argv) {
    auto* const x = static_cast<Faulty*>(object_alloc(FaultyClass()));
    if (!x) return nullptr;
    x->fault = argc > 0 ? atom_getsym(argv) : gensym("");
    if (Is(x, "misplaced")) outlet_new(x, "signal");
    x->dumpout = outlet_new(x, nullptr);
    if (x->dumpout && !Is(x, "unanswering"))
        object_obex_store(x, gensym("dumpout"), static_cast<t_object*>(x->dumpout));
    z_dsp_setup(&x->ob, 1);
    if (Is(x, "unwritten") || Is(x, "partial"))
        x->ob.z_misc = Z_NO_INPLACE;  // where nothing sounds by luck
    if (Is(x, "unmutable")) x->ob.z_misc = Z_IGNORE_DISABLE;
    if (Is(x, "spilling")) {
        void* const first = operator new(10, std::nothrow);
        void* const second = operator new(10, std::nothrow);
        if (!second) return first ? x : nullptr;  // and the first stays
        operator delete(first);
        operator delete(second);
    }
    if (!Is(x, "misplaced")) outlet_new(x, "signal");
    if (Is(x, "leaking")) sysmem_newptr(10);
    if (!Is(x, "unclipped"))
        attr_addfilter_clip(class_attr_get(FaultyClass(), gensym("gain")), 0, 1, 1,
                            Is(x, "unceiled") ? 0 : 1);
    return x;
}

}  // namespace

extern "C" MAX_EXPORTED void ext_main(void*) {
    t_class* const type = class_new("faulty~", MaxApi::ToMethod(New), MaxApi::ToMethod(Free),
                                    static_cast<max_long>(sizeof(Faulty)), nullptr, A_GIMME, 0);
    class_addmethod(type, MaxApi::ToMethod(Dsp64), "dsp64", A_CANT, 0);
    class_addmethod(type, MaxApi::ToMethod(DspState), "dspstate", A_CANT, 0);
    class_addmethod(type, MaxApi::ToMethod(Assist), "assist", A_CANT, 0);
    class_addmethod(type, MaxApi::ToMethod(GetValueOf), "getvalueof", A_CANT, 0);
    class_addmethod(type, MaxApi::ToMethod(SetValueOf), "setvalueof", A_CANT, 0);
    class_addmethod(type, MaxApi::ToMethod(Touch), "touch", 0);
    class_addattr(type, attr_offset_new("gain", gensym("float32"), 0, MaxApi::ToMethod(GetGain),
                                        MaxApi::ToMethod(SetGain),
                                        static_cast<max_long>(offsetof(Faulty, gain))));
    class_attr_addattr_parse(type, "gain", "min", gensym("float32"), 0, "0");
    class_attr_addattr_parse(type, "gain", "max", gensym("float32"), 0, "1");
    class_dspinit(type);
    class_dumpout_wrap(type);
    class_register(gensym("box"), type);
    FaultyClass() = type;
}
