// SPDX-License-Identifier: MIT
// Outlets, stored values, deferral, clocks, dictionaries.
#include "MaxApiProbe.h"

#include <thread>

namespace {

TEST_F(MaxApiTest, OutletsCountFromTheLeftThoughMadeFromTheRight) {
    EXPECT_EQ(HostApi::OutletTypes(object_), (Lines{"signal", "int", ""}));
    EXPECT_EQ(outlet_nth(object_, 1), probe_->outlets[1]);
    outlet_int(probe_->outlets[1], 5);
    t_atom atoms[2];
    atom_setlong(&atoms[0], 1);
    atom_setfloat(&atoms[1], 0.5);
    outlet_list(probe_->outlets[2], nullptr, 2, atoms);
    outlet_anything(probe_->outlets[2], gensym("pos"), 2, atoms);
    outlet_bang(probe_->outlets[2]);
    EXPECT_EQ(Take(), (Lines{"outlet 1: int 5", "outlet 2 dumpout: list 1 0.5",
                             "outlet 2 dumpout: pos 1 0.5", "outlet 2 dumpout: bang "}));
}

TEST_F(MaxApiTest, OutletsRefuseWhatIsNotOfTheirType) {
    EXPECT_EQ(outlet_bang(probe_->outlets[0]), nullptr);
    EXPECT_EQ(outlet_float(probe_->outlets[1], 1), nullptr);
    EXPECT_EQ(Take(), (Lines{"error: outlet of type \"signal\" does not send \"bang\"",
                             "error: outlet of type \"int\" does not send \"float\""}));
}

TEST_F(MaxApiTest, StoredObjectsAreFreedWithTheirOwner) {
    auto* const stored = static_cast<t_object*>(object_alloc(object_class(object_)));
    object_obex_store(object_, gensym("inner"), stored);
    t_object* found = nullptr;
    EXPECT_EQ(object_obex_lookup(object_, gensym("inner"), &found), MAX_ERR_NONE);
    EXPECT_EQ(found, stored);
    EXPECT_NE(object_obex_lookup(object_, gensym("#P"), &found), MAX_ERR_NONE);
    object_free(object_);
    EXPECT_EQ(Take(), (Lines{"freed", "freed"}));
    EXPECT_TRUE(object_isnogood(stored));
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

TEST_F(Deferral, WorkOfADeadObjectIsDroppedAndNewWorkWaitsForTheNextRound) {
    DeferAll();
    object_free(object_);
    Take();
    EXPECT_EQ(HostApi::RunDeferred(), 0u);

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

TEST_F(Deferral, ClocksRunByTimeAsTheScheduler) {
    const auto tick = MaxApi::ToMethod(+[](const char* name) {
        Say(std::string(name) + (isr() ? " in the scheduler" : " elsewhere"));
    });
    char late[] = "late", early[] = "early", never[] = "never";
    t_clock* const clocks[] = {clock_new(late, tick), clock_new(early, tick),
                               clock_new(never, tick)};
    clock_fdelay(clocks[0], 7);
    clock_delay(clocks[1], 5);
    clock_fdelay(clocks[2], 1);
    clock_unset(clocks[2]);
    const double start = systimer_gettime();
    HostApi::AdvanceClocks(6);
    EXPECT_EQ(Take(), Lines{"early in the scheduler"});
    HostApi::AdvanceClocks(6);
    EXPECT_EQ(Take(), Lines{"late in the scheduler"});
    EXPECT_EQ(systimer_gettime() - start, 12);
    for (t_clock* clock : clocks) object_free(clock);
}

// ---- Dictionaries

TEST_F(MaxApiTest, DictionariesKeepOrderReplaceAndOwn) {
    t_dictionary* const d = dictionary_new();
    auto atoms = HostApi::ParseAtoms("1 0.5 x");
    dictionary_appendlong(d, gensym("z"), 3);
    dictionary_appendatoms(d, gensym("list"), 3, atoms.data());
    dictionary_appendstring(d, gensym("text"), "two words");
    dictionary_appendfloat(d, gensym("z"), 4.5);  // keeps its place
    t_dictionary* const inner = dictionary_new();
    dictionary_appenddictionary(d, gensym("inner"), reinterpret_cast<t_object*>(inner));

    max_long count = 0;
    t_symbol** keys = nullptr;
    dictionary_getkeys_ordered(d, &count, &keys);
    ASSERT_EQ(count, 4);
    EXPECT_TRUE(keys[0] == gensym("z") && keys[1] == gensym("list") && keys[3] == gensym("inner"));
    dictionary_freekeys(d, count, keys);

    double number = 0;
    EXPECT_EQ(dictionary_getfloat(d, gensym("z"), &number), MAX_ERR_NONE);
    EXPECT_EQ(number, 4.5);
    EXPECT_NE(dictionary_getfloat(d, gensym("list"), &number), MAX_ERR_NONE);
    EXPECT_TRUE(dictionary_entryisatomarray(d, gensym("list")));

    t_dictionary* const copy = dictionary_clone(d);
    object_free(d);
    EXPECT_TRUE(object_isnogood(inner));
    t_atom* argv = nullptr;
    max_long argc = 0;
    ASSERT_EQ(dictionary_copyatoms(copy, gensym("list"), &argc, &argv), MAX_ERR_NONE);
    EXPECT_EQ(HostApi::AtomText(std::span(argv, static_cast<std::size_t>(argc))), "1 0.5 x");
    sysmem_freeptr(argv);
    object_free(copy);
}

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
