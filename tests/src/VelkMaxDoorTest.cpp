// SPDX-License-Identifier: MIT
// The audio thread neither waits at the door nor loses a message.
#include "max/VelkMaxDoor.h"

#include "HostBridge.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

using VelkMax::Atoms;
using VelkMax::Door;

namespace {

struct Visited {
    t_object object{};
    std::string numbers;  // what entered, in its order
    Door door{&object};

    static void Enter(void* record, t_symbol*, Atoms atoms) {
        static_cast<Visited*>(record)->numbers += atoms.Text() + ' ';
    }
    void Send(t_atom_long number, Door::Pace pace) {
        t_atom atom{};
        atom_setlong(&atom, number);
        door.Enter({&Enter, nullptr, Atoms(1, &atom)}, pace);
    }
};

void InAudio(const std::function<void()>& work) {
    std::thread([&] {
        const HostApi::ThreadScope audio(HostApi::ThreadKind::Audio);
        work();
    }).join();
}

}  // namespace

TEST(Door, LetsTheAudioThreadInAtOnceOnlyWhenNothingIsInTheWay) {
    Visited visited;
    InAudio([&] { visited.Send(1, Door::Pace::Prompt); });
    EXPECT_EQ(visited.numbers, "1 ");
    {
        const Door::Lock inside = visited.door.Wait();
        InAudio([&] {
            EXPECT_FALSE(visited.door.Ask().owns_lock());
            visited.Send(2, Door::Pace::Prompt);
        });
    }
    InAudio([&] {
        visited.Send(3, Door::Pace::Calm);
        visited.Send(4, Door::Pace::Prompt);  // not before those that wait
    });
    EXPECT_EQ(visited.numbers, "1 ");
    HostApi::AdvanceClocks(0);
    EXPECT_EQ(visited.numbers, "1 2 3 4 ");
}

TEST(Door, LosesNothingInAFlood) {
    Visited visited;
    std::string expected;
    InAudio([&] {
        for (int number = 0; number < 100; ++number) visited.Send(number, Door::Pace::Calm);
    });
    HostApi::AdvanceClocks(0);
    for (int number = 0; number < 100; ++number) expected += std::to_string(number) + ' ';
    EXPECT_EQ(visited.numbers, expected);
}
