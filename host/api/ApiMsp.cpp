// SPDX-License-Identifier: MIT
// The MSP side: signal objects, the global audio settings, a DSP chain of one object.
#include "ApiOutlets.h"
#include "HostAudioBridge.h"
#include "HostBridge.h"

#include <algorithm>
#include <mutex>
#include <set>
#include <vector>

namespace HostApi {

/// The object that a module knows as dsp64, and the perform routine that was added to it.
/// Lock order: first the lock of all chains, then that of a record.
struct DspChain::Record {
    t_object* handle = nullptr;  // the object that the module gets with the message dsp64
    std::mutex
        mutex;  // held while a perform routine runs, so that freeing the object waits for its end
    t_object* object = nullptr;  // null once it was removed from the chain
    const t_pxobject* signal = nullptr;
    t_perfroutine64 perform = nullptr;
    max_long flags = 0;
    void* userParameter = nullptr;

    void Add(t_object* x, t_perfroutine64 f, max_long addFlags, void* user);
    void LetGo(const void* x);
};

namespace {

struct Chain {
    t_object* object;
    t_object* handle;
    DspChain::Record* record;
};

struct Msp {
    std::mutex mutex;
    AudioSettings settings;
    std::set<const void*> signalObjects;  // between z_dsp_setup and z_dsp_free
    std::vector<Chain> chains;
};

Msp& TheMsp() {
    static auto& msp = *new Msp;
    return msp;
}

const t_pxobject* AsSignalObject(const t_object* object) {
    Msp& msp = TheMsp();
    const std::lock_guard lock(msp.mutex);
    const bool known = msp.signalObjects.contains(object);
    return known ? reinterpret_cast<const t_pxobject*>(object) : nullptr;
}

void AddToChain(t_object* chain, t_object* x, t_perfroutine64 f, max_long flags, void* user) {
    dsp_add64(chain, x, f, flags, user);
}

t_class* ChainClass() {
    static t_class* const type = [] {
        t_class* made = class_new("dspchain", nullptr, nullptr,
                                  static_cast<max_long>(sizeof(t_object)), nullptr, 0);
        class_addmethod(made, MaxApi::ToMethod(AddToChain), "dsp_add64", A_CANT, 0);
        return made;
    }();
    return type;
}

std::size_t CountSignals(const std::vector<std::string>& types) {
    return static_cast<std::size_t>(std::ranges::count(types, "signal"));
}

}  // namespace

void DspChain::Record::Add(t_object* x, t_perfroutine64 f, max_long addFlags, void* user) {
    const std::lock_guard lock(mutex);
    if (x != object || !f || perform) {
        object_bug(x, "%s", "dsp_add64: one perform routine, of the object that got dsp64");
        return;
    }
    perform = f;
    flags = addFlags;
    userParameter = user;
}

void DspChain::Record::LetGo(const void* x) {
    const std::lock_guard lock(mutex);
    if (object != x) return;
    object = nullptr;
    signal = nullptr;
    perform = nullptr;
}

DspChain::DspChain(t_object* object, std::span<const short> counts) : record_(new Record) {
    record_->handle = static_cast<t_object*>(object_alloc(ChainClass()));
    record_->object = object;
    record_->signal = AsSignalObject(object);
    Msp& msp = TheMsp();
    AudioSettings settings;
    {
        const std::lock_guard lock(msp.mutex);
        msp.chains.push_back({object, record_->handle, record_});
        settings = msp.settings;
    }
    if (record_->signal && (record_->signal->z_misc & Z_DONT_ADD)) return;
    const method dsp64 = object_getmethod(object, gensym("dsp64"));
    if (dsp64 == MaxApi::ToMethod(method_false)) return;
    std::vector<short> copy(counts.begin(), counts.end());  // a copy, since modules may write to it
    using Dsp64 = void(t_object*, t_object*, short*, double, max_long, max_long);
    MaxApi::FromMethod<Dsp64>(dsp64)(object, record_->handle, copy.data(), settings.sampleRateHz,
                                     settings.vectorSize, 0);
}

DspChain::~DspChain() {
    {
        Msp& msp = TheMsp();
        const std::lock_guard lock(msp.mutex);
        std::erase_if(msp.chains, [this](const Chain& chain) { return chain.record == record_; });
    }
    object_free(record_->handle);
    delete record_;
}

bool DspChain::HasPerform() const {
    const std::lock_guard lock(record_->mutex);
    return record_->perform != nullptr;
}

void DspChain::Perform(double* const* inputs,
                       std::size_t numInputs,
                       double* const* outputs,
                       std::size_t numOutputs,
                       std::size_t frames) {
    const ThreadScope audio(ThreadKind::Perform);
    const std::lock_guard lock(record_->mutex);
    const t_pxobject* const signal = record_->signal;
    const bool disabled = signal && signal->z_disabled && !(signal->z_misc & Z_IGNORE_DISABLE);
    if (!record_->perform || disabled) {
        for (std::size_t i = 0; i < numOutputs; ++i) std::fill_n(outputs[i], frames, 0.0);
        return;
    }
    // Perform routines do not change the arrays of pointers, although the API declares no const.
    record_->perform(record_->object, record_->handle, const_cast<double**>(inputs),
                     static_cast<max_long>(numInputs), const_cast<double**>(outputs),
                     static_cast<max_long>(numOutputs), static_cast<max_long>(frames),
                     record_->flags, record_->userParameter);
}

void SetAudioSettings(const AudioSettings& settings) {
    Msp& msp = TheMsp();
    const std::lock_guard lock(msp.mutex);
    msp.settings = settings;
}

void AnnounceDspState() {
    Msp& msp = TheMsp();
    std::vector<Chain> chains;
    bool isOn = false;
    {
        const std::lock_guard lock(msp.mutex);
        chains = msp.chains;
        isOn = msp.settings.isOn;
    }
    for (const Chain& chain : chains) {
        const method dspstate = object_getmethod(chain.object, gensym("dspstate"));
        if (dspstate == MaxApi::ToMethod(method_false)) continue;
        MaxApi::FromMethod<void(t_object*, max_long)>(dspstate)(chain.object, isOn ? 1 : 0);
    }
}

AudioSettings GetAudioSettings() {
    Msp& msp = TheMsp();
    const std::lock_guard lock(msp.mutex);
    return msp.settings;
}

std::size_t SignalInlets(t_object* object) { return CountSignals(InletTypes(object)); }

std::size_t SignalOutlets(t_object* object) { return CountSignals(OutletTypes(object)); }

int SignalFlags(t_object* object) {
    const t_pxobject* signal = AsSignalObject(object);
    return signal ? signal->z_misc : 0;
}

namespace {

void Enable(t_pxobject* x, t_atom_long on) { x->z_disabled = on ? 0 : 1; }

t_atom_long SignalInletCount(t_pxobject* x) { return x->z_count; }

}  // namespace
}  // namespace HostApi

using namespace HostApi;

void class_dspinit(t_class* c) {
    // Max sends these messages to every signal object; a class must not define its own.
    class_addmethod(c, MaxApi::ToMethod(method_false), "signal", A_CANT, 0);
    class_addmethod(c, MaxApi::ToMethod(method_false), "userconnect", A_CANT, 0);
    class_addmethod(c, MaxApi::ToMethod(SignalInletCount), "nsiginlets", A_CANT, 0);
    class_addmethod(c, MaxApi::ToMethod(Enable), "enable", A_LONG, 0);
}

void z_dsp_setup(t_pxobject* x, max_long nsignals) {
    x->z_count = static_cast<short>(std::max(nsignals, max_long{0}));
    x->z_misc = 0;
    x->z_disabled = 0;
    for (max_long inlet = nsignals - 1; inlet >= 1; --inlet)
        x->z_proxy = proxy_new(x, inlet, &x->z_in);
    SetSignalInlets(&x->z_ob, static_cast<std::size_t>(x->z_count));
    Msp& msp = TheMsp();
    const std::lock_guard lock(msp.mutex);
    msp.signalObjects.insert(x);
}

void z_dsp_free(t_pxobject* x) {
    SetSignalInlets(&x->z_ob, 0);
    Msp& msp = TheMsp();
    const std::lock_guard lock(msp.mutex);
    msp.signalObjects.erase(x);
    for (const Chain& chain : msp.chains)
        if (chain.object == &x->z_ob) chain.record->LetGo(x);
    std::erase_if(msp.chains, [x](const Chain& chain) { return chain.object == &x->z_ob; });
}

void dsp_add64(t_object* chain, t_object* x, t_perfroutine64 f, max_long flags, void* userparam) {
    DspChain::Record* record = nullptr;
    {
        Msp& msp = TheMsp();
        const std::lock_guard lock(msp.mutex);
        const auto found = std::ranges::find(msp.chains, chain, &Chain::handle);
        if (found == msp.chains.end()) return;
        record = found->record;
    }
    record->Add(x, f, flags, userparam);
}

float sys_getsr() { return static_cast<float>(GetAudioSettings().sampleRateHz); }

int sys_getblksize() { return GetAudioSettings().vectorSize; }

int sys_getmaxblksize() { return GetAudioSettings().vectorSize; }

int sys_getdspstate() { return GetAudioSettings().isOn ? 1 : 0; }

int sys_getdspobjdspstate(t_object* x) {
    Msp& msp = TheMsp();
    const std::lock_guard lock(msp.mutex);
    const bool hasChain = std::ranges::find(msp.chains, x, &Chain::object) != msp.chains.end();
    return msp.settings.isOn && hasChain ? 1 : 0;
}

void set_zero64(double* dst, max_long n) {
    if (n > 0) std::fill_n(dst, n, 0.0);
}
