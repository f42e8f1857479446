// SPDX-License-Identifier: MIT
// The audio thread neither waits at the door nor loses the last word; nobody is held up by what
// Max does; nothing reaches an object that has been freed.
#include "max/VelkMaxDoor.h"

#include "HostBridge.h"
#include "max/VelkMaxHandlers.h"
#include "max/VelkMaxObjectParts.h"
#include "src/PanBox.h"
#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <new>
#include <string>
#include <thread>

using VelkMax::Atoms;
using VelkMax::Door;
using VelkMax::Letter;
using Lines = std::vector<std::string>;

namespace {

struct Visited {
    t_object object{};
    std::string numbers;  // what entered, in its order
    Door door{&object};
    VelkMax::KeptDictionary dictionary;

    Visited() { door.Open(100); }
    static void Enter(void* record, t_symbol*, Atoms atoms) {
        static_cast<Visited*>(record)->numbers += atoms.Text() + ' ';
    }
    void Send(const std::string& atoms, Letter::Pace pace, unsigned numSubjectAtoms = 0) {
        const std::vector<t_atom> parsed = HostApi::ParseAtoms(atoms);
        Send(parsed, pace, numSubjectAtoms);
    }
    void Send(std::span<const t_atom> atoms, Letter::Pace pace, unsigned numSubjectAtoms = 0) {
        door.Enter({&Enter, pace, nullptr, Atoms(atoms), numSubjectAtoms});
    }
};

void InAudio(const std::function<void()>& work) {
    std::thread([&] {
        const HostApi::ThreadScope audio(HostApi::ThreadKind::Audio);
        work();
    }).join();
}

class DoorTest : public testing::Test {
protected:
    void SetUp() override {
        HostApi::SetConsoleSink([this](HostApi::PostKind kind, std::string_view text, t_object*) {
            constexpr const char* kKinds[] = {"post: ", "error: ", "warn: ", "bug: "};
            said.push_back(kKinds[static_cast<int>(kind)] + std::string(text));
        });
    }
    void TearDown() override { HostApi::SetConsoleSink({}); }

    Lines said;
};

}  // namespace

TEST_F(DoorTest, LetsTheAudioThreadInAtOnceOnlyWhenNothingIsInTheWay) {
    Visited visited;
    InAudio([&] { visited.Send("1", Letter::Pace::Prompt); });
    EXPECT_EQ(visited.numbers, "1 ");
    {
        const Door::Visit inside(visited.door);
        InAudio([&] {
            EXPECT_FALSE(Door::Visit(visited.door, Door::Patience::WaitsOutsideAudio));
            visited.Send("2", Letter::Pace::Prompt);
        });
        visited.door.StepOutside([&] {
            InAudio(
                [&] { EXPECT_TRUE(Door::Visit(visited.door, Door::Patience::WaitsOutsideAudio)); });
        });
    }
    InAudio([&] {
        visited.Send("3", Letter::Pace::Calm);
        visited.Send("4", Letter::Pace::Prompt);  // not before those that wait
    });
    EXPECT_EQ(visited.numbers, "1 ");
    HostApi::AdvanceClocks(0);
    EXPECT_EQ(visited.numbers, "1 2 3 4 ");
}

// A letter about each of 300 sources, then a second one: 256 fit. The last word about each of these
// arrives, in its place; the others are counted, and so is one that is too long.
TEST_F(DoorTest, KeepsTheLastWordInAFloodAndCountsWhatItLost) {
    Visited visited;
    std::vector<std::vector<t_atom>> flood;
    for (const int round : {0, 1})
        for (int source = 1; source <= 300; ++source)
            flood.push_back(HostApi::ParseAtoms(std::to_string(source) + " az " +
                                                std::to_string(round * 1000 + source)));
    const std::vector<t_atom> tooLong(1025);
    InAudio([&] {
        const Tests::AllocationTrap trap;
        for (const auto& letter : flood) visited.Send(letter, Letter::Pace::Calm, 2);
        visited.Send(tooLong, Letter::Pace::Calm);
        EXPECT_LE(trap.Violations(), 2u) << "the host's own lock of its clocks, once for each";
    });
    HostApi::AdvanceClocks(0);
    std::string expected;
    for (int source = 1; source <= 256; ++source)
        expected += std::to_string(source) + " az " + std::to_string(1000 + source) + ' ';
    EXPECT_EQ(visited.numbers, expected);
    // At most once a second, whatever is lost meanwhile.
    EXPECT_EQ(said, Lines{});
    HostApi::AdvanceClocks(1000);
    EXPECT_EQ(said, Lines{"warn: 89 messages from the audio thread came too fast and were lost"});
    // 39 long ones fit, those behind them take the place of the last.
    visited.numbers.clear();
    std::vector<t_atom> longest(100);
    InAudio([&] {
        for (t_atom_long number = 1; number <= 60; ++number) {
            for (t_atom& atom : longest) atom_setlong(&atom, number);
            visited.Send(longest, Letter::Pace::Calm);
        }
    });
    HostApi::AdvanceClocks(0);
    expected.clear();
    for (int number = 1; number <= 39; ++number)
        for (int k = 0; k < 100; ++k) expected += std::to_string(number < 39 ? number : 60) + ' ';
    EXPECT_EQ(visited.numbers, expected);
}

TEST_F(DoorTest, SaysWhatIsSaidInsideOnlyWhenItIsLeft) {
    Visited visited;
    {
        const Door::Visit inside(visited.door);
        const VelkMax::ObjectParts parts{&visited.object, visited.door, visited.dictionary};
        VelkMax::Error(parts, VelkMax::kLine, std::string(1000, 'x').c_str());
        VelkMax::Post(parts, VelkMax::kDspOn);
        EXPECT_EQ(said, Lines{});
    }
    EXPECT_EQ(said, (Lines{"error: " + std::string(1000, 'x'), "post: dsp is on"}));
}

// Worth most under the sanitizers: the audio thread floods, the scheduler ticks, the main thread
// enters, until the door closes with letters, an announcement and an errand still waiting.
TEST_F(DoorTest, ClosesWhileTheOthersAreAtWork) {
    for (int round = 0; round < 20; ++round) {
        Visited visited;
        std::atomic<bool> isFree = false;
        std::thread scheduler([&] {
            while (!isFree) HostApi::AdvanceClocks(50);
        });
        std::string expected;
        for (int step = 0; step < 50; ++step) {
            InAudio([&] { visited.Send("1", Letter::Pace::Prompt); });
            visited.Send("2", Letter::Pace::Calm);
            const Door::Visit inside(visited.door);
            visited.door.Changed(gensym("x"));
        }
        visited.door.SendToMain({&Visited::Enter});
        InAudio([&] { visited.Send("3", Letter::Pace::Calm); });
        visited.door.Close();
        const std::string numbers = visited.numbers;
        visited.Send("4", Letter::Pace::Calm);
        isFree = true;
        scheduler.join();
        HostApi::Settle();
        EXPECT_EQ(visited.numbers, numbers) << "nothing enters any more";
        EXPECT_EQ(std::ranges::count(numbers, '2'), 50);
    }
    EXPECT_EQ(said, Lines{});
}

// An errand whose work waits for a word of the main thread, and one behind it.
TEST_F(DoorTest, LetsLongWorkOfAnErrandHoldUpNobodyButTheErrandsBehindIt) {
    using Kind = HostApi::ThreadKind;
    struct Slow : Visited {
        std::promise<bool> word;  // true: it fails
        Kind computedBy = Kind::Main;
        void Add(const char* text) { numbers += text; }
    };
    class Work final : public VelkMax::LongWork {
    public:
        explicit Work(Slow& slow) : slow_(slow) {}
        ~Work() override { slow_.Add("deleted "); }
        void Compute() override {
            slow_.computedBy = HostApi::CurrentThreadKind();
            if (slow_.word.get_future().get()) throw std::bad_alloc();
        }
        void Finish() override { slow_.Add("finished "); }

    private:
        Slow& slow_;
    };
    constexpr auto kBegin = [](void* record, t_symbol*, Atoms) {
        auto& slow = *static_cast<Slow*>(static_cast<Visited*>(record));
        const Door::Visit inside(slow.door);
        slow.door.CarryOut(std::make_unique<Work>(slow));
        slow.Add("begun ");
    };
    const auto send = [&](Slow& slow, Letter::Pace pace) {
        slow.door.SendToMain({kBegin, pace});
        slow.Send("1", Letter::Pace::Calm);
        slow.door.SendToMain({&Visited::Enter, Letter::Pace::InMain, nullptr, Atoms()});
    };
    {
        Slow slow;
        send(slow, Letter::Pace::InMain);
        HostApi::RunDeferred();
        slow.Send("2", Letter::Pace::Calm);
        HostApi::RunDeferred();
        EXPECT_EQ(slow.numbers, "1 begun 2 ");
        slow.word.set_value(false);
        HostApi::Settle();
        EXPECT_EQ(slow.numbers, "1 begun 2 finished deleted  ");
        EXPECT_EQ(slow.computedBy, Kind::Module);
    }
    for (const auto pace : {Letter::Pace::InMain, Letter::Pace::Outside}) {
        // Without a thread, or because it is no errand that may wait, main does it.
        Slow slow;
        slow.word.set_value(false);
        if (pace == Letter::Pace::InMain) HostApi::FailCall("systhread_create", 1, MAX_ERR_GENERIC);
        send(slow, pace);
        HostApi::RunDeferred();
        EXPECT_EQ(slow.numbers, pace == Letter::Pace::InMain ? "1 begun finished deleted  "
                                                             : "1 finished deleted begun  ");
        EXPECT_EQ(slow.computedBy, Kind::Main);
    }
    for (const bool isFreed : {true, false}) {
        Slow slow;
        send(slow, Letter::Pace::InMain);
        HostApi::RunDeferred();
        slow.word.set_value(true);
        if (isFreed) slow.door.Close();
        HostApi::Settle();
        EXPECT_EQ(slow.numbers, isFreed ? "1 begun deleted " : "1 begun deleted  ");
        EXPECT_EQ(said.empty(), isFreed);
    }
    EXPECT_EQ(said, Lines{std::string("error: out of memory : ") + std::bad_alloc().what()});
}

TEST(FreedObject, IsNotReachedByWhatItPutOff) {
    using Tests::PanBox;
    for (const bool isRunning : {false, true}) {
        PanBox box("2 4 vbap2d");
        std::atomic<bool> isFree = false;
        std::thread scheduler([&] {
            while (isRunning && !isFree) HostApi::AdvanceClocks(10);
        });
        box.Send("source 1 az 30");  // an announcement waits
        InAudio([&] {
            box.Send("speakers az -40 40 130 -130");  // a letter
            box.Send("source 9 az 1");                // a line
            HostApi::AdvanceClocks(0);                // the scheduler in the audio interrupt
        });
        box.Send("exportdict");  // an errand
        box.Free();
        isFree = true;
        scheduler.join();
        HostApi::AdvanceClocks(2000);
        HostApi::Settle();
        EXPECT_EQ(box.TakeConsole(), Lines{"error: invalid source index 9"});
    }
}
