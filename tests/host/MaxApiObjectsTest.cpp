// SPDX-License-Identifier: MIT
// Outlets, deferral, named dictionaries.
#include "MaxApiProbe.h"

#include <thread>

namespace {

TEST_F(MaxApiTest, OutletsRefuseWhatIsNotOfTheirType) {
    EXPECT_EQ(outlet_bang(probe_->outlets[0]), nullptr);
    EXPECT_EQ(outlet_float(probe_->outlets[1], 1), nullptr);
    EXPECT_EQ(Take(), (Lines{"error: outlet of type \"signal\" does not send \"bang\"",
                             "error: outlet of type \"int\" does not send \"float\""}));
}

// ---- Deferral

class Deferral : public MaxApiTest {
protected:
    static void Later(Probe*, t_symbol* s, short argc, t_atom* argv) {
        Say(std::string(s->s_name) + " " + std::to_string(argc) + " " + HostApi::AtomText(*argv));
    }

    /// Calls all three with the atom 1, which changes before any of them is served.
    void DeferAll() {
        t_atom atom{};
        atom_setlong(&atom, 1);
        const method later = MaxApi::ToMethod(Later);
        defer_low(probe_, later, gensym("low"), 1, &atom);
        defer_medium(probe_, later, gensym("medium"), 1, &atom);
        defer(probe_, later, gensym("front"), 1, &atom);
        atom_setlong(&atom, 2);
    }
};

TEST_F(Deferral, FromTheMainThreadOnlyTheLowOneWaits) {
    DeferAll();
    EXPECT_EQ(Take(), (Lines{"medium 1 1", "front 1 1"}));
    EXPECT_EQ(HostApi::RunDeferred(), 1u);
    EXPECT_EQ(Take(), Lines{"low 1 1"});
}

TEST_F(Deferral, FromTheSchedulerAllWaitInTheOrderOfTheirEnds) {
    {
        const HostApi::ThreadScope scheduler(HostApi::ThreadKind::Scheduler);
        EXPECT_TRUE(isr() && !systhread_ismainthread());
        DeferAll();
    }
    EXPECT_EQ(Take(), Lines{});
    EXPECT_EQ(HostApi::RunDeferred(), 3u);
    EXPECT_EQ(Take(), (Lines{"front 1 1", "low 1 1", "medium 1 1"}));
    std::thread other(
        [] { EXPECT_EQ(HostApi::CurrentThreadKind(), HostApi::ThreadKind::Scheduler); });
    other.join();
}

TEST_F(Deferral, DeferredMethodsWaitAndUsurpingOnesCollapse) {
    EXPECT_EQ(Send("lastonly 1"), Lines{});
    Send("later 1");
    Send("lastonly 2");
    HostApi::RunDeferred();
    EXPECT_EQ(Take(), (Lines{"raw later (1) inlet 0", "raw lastonly (2) inlet 0"}));
}

TEST_F(Deferral, WorkOfADeadObjectIsReportedAndNewWorkWaitsForTheNextRound) {
    t_class* const type = object_class(object_);
    t_clock* const clock = clock_new(object_, MaxApi::ToMethod(+[](void*) { Say("clock"); }));
    clock_fdelay(clock, 0);
    DeferAll();
    object_free(object_);
    Take();
    HostApi::AdvanceClocks(0);
    object_free(clock);
    // One that has its memory is not taken for it.
    std::vector<void*> others;
    for (int k = 0; k < 100; ++k) others.push_back(object_alloc(type));
    EXPECT_EQ(HostApi::RunDeferred(), 1u);
    const std::string report =
        "bug: a deferred call reaches an object of class \"probe\" after it was freed";
    EXPECT_EQ(Take(), (Lines{report, report}));
    for (void* other : others) object_free(other);
    Take();

    static void* element = nullptr;
    element = qelem_new(nullptr, MaxApi::ToMethod(+[](void*) {
                            Say("element");
                            qelem_set(element);
                        }));
    qelem_set(element);
    qelem_set(element);
    EXPECT_EQ(HostApi::RunDeferred(), 1u);
    EXPECT_EQ(HostApi::RunDeferred(), 1u);
    EXPECT_EQ(Take(), (Lines{"element", "element"}));
    qelem_free(element);
    EXPECT_EQ(HostApi::RunDeferred(), 0u);
}

TEST_F(MaxApiTest, ClocksRingInTheOrderOfTheirTimes) {
    const method ring = MaxApi::ToMethod(+[](const char* name) { Say(name); });
    char late[] = "late", early[] = "early";
    t_clock* const clocks[] = {clock_new(late, ring), clock_new(early, ring)};
    clock_fdelay(clocks[0], 20);
    clock_fdelay(clocks[1], 10);
    HostApi::AdvanceClocks(30);
    EXPECT_EQ(Take(), (Lines{"early", "late"}));
    for (t_clock* clock : clocks) object_free(clock);
}

// ---- Dictionaries

TEST_F(MaxApiTest, ADictionaryFoundByNameOutlivesItsMakersFree) {
    t_symbol* name = nullptr;
    t_dictionary* const d = dictobj_register(dictionary_new(), &name);
    ASSERT_NE(name, nullptr);
    t_dictionary* const found = dictobj_findregistered_retain(name);
    EXPECT_EQ(found, d);
    object_free(d);
    EXPECT_FALSE(object_isnogood(found));
    dictobj_release(found);
    EXPECT_TRUE(object_isnogood(found));
    EXPECT_EQ(dictobj_findregistered_retain(name), nullptr);
}

}  // namespace
