// SPDX-License-Identifier: MIT
// The MSP API as this project uses it: everything MaxAudio exports that a module or the host needs.
#pragma once

#include "ext.h"

extern "C" {

/// The header of a signal object's record.
struct t_pxobject {
    t_object z_ob;
    max_long z_in;  // never read it: proxy_getinlet knows the thread
    void* z_proxy;
    max_long z_disabled;  // not 0 while the patcher is muted
    short z_count;        // number of signal inlets
    short z_misc;         // Z_ flags, set after z_dsp_setup
};
static_assert(sizeof(t_pxobject) == 56 && offsetof(t_pxobject, z_in) == 32);
static_assert(offsetof(t_pxobject, z_proxy) == 40 && offsetof(t_pxobject, z_disabled) == 48);
static_assert(offsetof(t_pxobject, z_count) == 52 && offsetof(t_pxobject, z_misc) == 54);

enum e_max_zflags : short {
    Z_NO_INPLACE = 1,  // input and output vectors must not share memory
    Z_PUT_LAST = 2,
    Z_PUT_FIRST = 4,
    Z_IGNORE_DISABLE = 8,
    Z_DONT_ADD = 16,
    Z_MC_INLETS = 32,
};
inline constexpr int SYS_MAXBLKSIZE = 2048;
inline constexpr int MC_MAX_CHANS = 1024;

/// Audio thread. Output vectors hold old data: every call writes all of them.
using t_perfroutine64 = void (*)(t_object* x,
                                 t_object* dsp64,
                                 double** ins,
                                 max_long numins,
                                 double** outs,
                                 max_long numouts,
                                 max_long sampleframes,
                                 max_long flags,
                                 void* userparam);

// class_dspinit comes before class_register and takes the names signal, userconnect, nsiginlets and
// enable. z_dsp_setup comes before other inlets and z_dsp_free first in the free routine: it takes
// the object out of the running chain.
MAXAUDIO_EXPORT void class_dspinit(t_class* c);
MAXAUDIO_EXPORT void z_dsp_setup(t_pxobject* x, max_long nsignals);
MAXAUDIO_EXPORT void z_dsp_free(t_pxobject* x);
MAXAUDIO_EXPORT void dsp_add64(
    t_object* chain, t_object* x, t_perfroutine64 f, max_long flags, void* userparam);
MAXAUDIO_EXPORT float sys_getsr();
MAXAUDIO_EXPORT int sys_getblksize();
MAXAUDIO_EXPORT int sys_getmaxblksize();
MAXAUDIO_EXPORT int sys_getdspstate();
MAXAUDIO_EXPORT int sys_getdspobjdspstate(t_object* x);
MAXAUDIO_EXPORT void set_zero64(double* dst, max_long n);

}  // extern "C"
