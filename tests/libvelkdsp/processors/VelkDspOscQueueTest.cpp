// SPDX-License-Identifier: MIT
#include "processors/VelkDspOscQueue.h"

#include <gtest/gtest.h>

#include <random>

namespace tav {
namespace {

/// The same queue as two lists that are searched.
struct ListQueue {
    unsigned Put(const OscCommand& command) {
        const auto isSame = [&](const OscCommand& other) { return other.Key() == command.Key(); };
        const auto same = std::find_if(pending.rbegin(), pending.rend(), isSame);
        const bool isKnown = same != pending.rend();
        const bool isFull = pending.size() == capacity;
        if (isFull && !isKnown) return 1;
        if (isKnown && (isFull || command.isAbsolute)) pending.erase(std::next(same).base());
        pending.push_back(command);
        return isFull && !command.isAbsolute ? 1 : 0;
    }
    std::vector<float> Run(std::size_t most) {
        std::vector<float> numbers;
        for (const bool isSecondBox : {false, true}) {
            if (isSecondBox && taken.empty()) std::swap(taken, pending);
            for (; !taken.empty() && numbers.size() < most; taken.erase(taken.begin())) {
                numbers.push_back(taken.front().values[0]);
            }
        }
        return numbers;
    }

    std::size_t capacity;
    std::vector<OscCommand> pending{}, taken{};
};

TEST(OscQueue, KeepsTheNewestOfEachAddressInTheOrderOfArrival) {
    std::mt19937 random(12);
    for (const std::size_t capacity : {1u, 4u, 32u}) {
        OscQueue queue(capacity);
        ListQueue model{capacity};
        for (int step = 0; step < 30'000; ++step) {
            const auto route = static_cast<std::uint16_t>(random() % 4);
            const auto subject = static_cast<std::uint16_t>(random() % 14);
            const OscCommand command{
                route, subject, 0, route % 2 == 1, {static_cast<float>(step), 0, 0}};
            std::vector<float> run;
            const auto note = [&](const OscCommand& next) { run.push_back(next.values[0]); };
            const auto most = static_cast<std::size_t>(random() % (capacity + 2));
            switch (random() % (3 * capacity)) {
                case 0: {
                    queue.RunInAudio(most, note);
                    ASSERT_EQ(run, model.Run(most)) << step;
                    break;
                }
                case 1: {
                    queue.RunAll(note);
                    ASSERT_EQ(run, model.Run(1000)) << step;
                    break;
                }
                case 2: {
                    OscBox::Outcome outcome{};
                    const auto fill = [&](OscBox& box) { outcome = box.Put(command); };
                    ASSERT_TRUE(queue.PutInAudio(fill));
                    ASSERT_EQ(outcome == OscBox::Outcome::Kept ? 0u : 1u, model.Put(command));
                    break;
                }
                default: ASSERT_EQ(queue.Put({&command, 1}), model.Put(command)) << step;
            }
            ASSERT_EQ(queue.IsWaiting(), model.pending.size() + model.taken.size() > 0) << step;
        }
    }
}

}  // namespace
}  // namespace tav
