// SPDX-License-Identifier: MIT
// The MSP side: chains, counts, leaving, muting.
#include "HostAudioBridge.h"
#include "MaxApiProbe.h"

#include <array>

namespace {

struct Doubler {
    t_pxobject ob;
    void* outlet;
    std::vector<short>* counts;
    double rateHz;
    max_long vectorSize;
    max_long dspState;
};

void Perform(Doubler*,
             t_object*,
             double** ins,
             max_long,
             double** outs,
             max_long,
             max_long frames,
             max_long,
             void* factor) {
    EXPECT_TRUE(systhread_isaudiothread());
    for (max_long i = 0; i < frames; ++i) outs[0][i] = *static_cast<double*>(factor) * ins[1][i];
}

double factor = 2;

void Dsp64(Doubler* x, t_object* chain, short* count, double rate, max_long size, max_long) {
    x->counts->assign(count, count + 3);
    x->rateHz = rate;
    x->vectorSize = size;
    object_method_imp(chain, gensym("dsp_add64"), x, reinterpret_cast<void*>(Perform), nullptr,
                      &factor, nullptr, nullptr, nullptr, nullptr);
}

void DspState(Doubler* x, max_long on) { x->dspState = on; }

class SignalObject : public MaxApiTest {
protected:
    void SetUp() override {
        MaxApiTest::SetUp();
        static t_class* const type = [] {
            t_class* made = class_new("doubler~", nullptr, nullptr,
                                      static_cast<max_long>(sizeof(Doubler)), nullptr, A_GIMME, 0);
            class_addmethod(made, MaxApi::ToMethod(Dsp64), "dsp64", A_CANT, 0);
            class_addmethod(made, MaxApi::ToMethod(DspState), "dspstate", A_CANT, 0);
            class_dspinit(made);
            return made;
        }();
        doubler_ = static_cast<Doubler*>(object_alloc(type));
        doubler_->counts = &counts_;
        z_dsp_setup(&doubler_->ob, 2);
        doubler_->outlet = outlet_new(doubler_, "signal");
        HostApi::SetAudioSettings({96000, 4, false});
    }
    void TearDown() override {
        if (object_isnogood(doubler_)) return;
        z_dsp_free(&doubler_->ob);
        object_free(doubler_);
        MaxApiTest::TearDown();
    }

    /// One vector of ones and twos into stale outputs; gives the first output sample.
    double Run(HostApi::DspChain& chain) {
        std::array<double, 4> left{1, 1, 1, 1}, right{2, 2, 2, 2}, out{9, 9, 9, 9};
        double* const ins[] = {left.data(), right.data()};
        double* const outs[] = {out.data()};
        chain.Perform(ins, 2, outs, 1, 4);
        EXPECT_EQ(out[0], out[3]);
        return out[0];
    }

    static constexpr short kConnected[] = {0, 1, 1};
    Doubler* doubler_ = nullptr;
    std::vector<short> counts_;
};

TEST_F(SignalObject, HearsOfItsChainAndPerforms) {
    HostApi::DspChain chain(&doubler_->ob.z_ob, kConnected);
    EXPECT_EQ(counts_, (std::vector<short>{0, 1, 1}));
    EXPECT_EQ(doubler_->rateHz, 96000);
    EXPECT_EQ(doubler_->vectorSize, 4);
    EXPECT_EQ(Run(chain), 4);
    EXPECT_EQ(HostApi::InletTypes(&doubler_->ob.z_ob), (Lines{"signal", "signal"}));
    EXPECT_EQ(HostApi::SignalOutlets(&doubler_->ob.z_ob), 1u);
    EXPECT_EQ(sys_getsr(), 96000.f);
    HostApi::SetAudioSettings({96000, 4, true});
    EXPECT_EQ(doubler_->dspState, 1);
    EXPECT_TRUE(sys_getdspobjdspstate(&doubler_->ob.z_ob));
}

TEST_F(SignalObject, IsSilentWhileDisabledUnlessItIgnoresThat) {
    HostApi::DspChain chain(&doubler_->ob.z_ob, kConnected);
    object_ = &doubler_->ob.z_ob;
    Send("enable 0");
    EXPECT_EQ(Run(chain), 0);
    doubler_->ob.z_misc = Z_IGNORE_DISABLE;
    EXPECT_EQ(Run(chain), 4);
    object_ = &probe_->ob;
}

TEST_F(SignalObject, LeavesTheChainBeforeItIsFreed) {
    HostApi::DspChain chain(&doubler_->ob.z_ob, kConnected);
    z_dsp_free(&doubler_->ob);
    EXPECT_FALSE(chain.HasPerform());
    object_free(doubler_);
    EXPECT_EQ(Run(chain), 0);
    HostApi::SetAudioSettings({96000, 4, true});  // nobody is left to hear it
    MaxApiTest::TearDown();
}

TEST_F(SignalObject, FreedWithoutLeavingIsReported) {
    object_free(doubler_);
    EXPECT_EQ(Take(), Lines{"bug: freed without z_dsp_free"});
    MaxApiTest::TearDown();
}

TEST_F(SignalObject, AnotherObjectCannotJoinTheChain) {
    HostApi::DspChain chain(object_, {});  // has no dsp64
    EXPECT_FALSE(chain.HasPerform());
    EXPECT_EQ(Run(chain), 0);
}

}  // namespace
