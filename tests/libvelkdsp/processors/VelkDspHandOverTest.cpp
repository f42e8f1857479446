// SPDX-License-Identifier: MIT
#include "processors/VelkDspHandOver.h"

#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <thread>

namespace tav {
namespace {

struct Pair {
    float value;
    std::uint32_t copy;
    std::uint32_t inverse;
};

Pair MakePair(std::uint32_t value) { return {static_cast<float>(value), value, ~value}; }

TEST(SharedCell, GivesEachStoreOnceTheNewestOnly) {
    SharedCell<Pair> cell;
    Pair pair{};
    EXPECT_FALSE(cell.Take(pair)) << "nothing was stored";
    cell.Store(MakePair(1));
    cell.Store(MakePair(2));
    ASSERT_TRUE(cell.Take(pair));
    EXPECT_EQ(pair.copy, 2u);
    EXPECT_FALSE(cell.Take(pair));
    cell.Store(MakePair(2));
    EXPECT_TRUE(cell.Take(pair)) << "the same values again are news";
}

TEST(SharedCell, NeverMixesTwoStores) {
    constexpr std::uint32_t kStores = 20000;
    SharedCell<Pair> cell;
    std::thread control([&] {
        for (std::uint32_t value = 1; value <= kStores; ++value) cell.Store(MakePair(value));
    });
    std::uint32_t last = 0;
    bool sound = true;
    for (Pair pair{}; last != kStores;) {
        if (!cell.Take(pair)) continue;
        sound = sound && pair.value == static_cast<float>(pair.copy) &&
                pair.inverse == ~pair.copy && pair.copy > last;
        last = pair.copy;
    }
    control.join();
    EXPECT_TRUE(sound);
}

/// Counts the living.
struct Guest {
    Guest(int& alive, int which) : living(alive), number(which) { ++living; }
    ~Guest() { --living; }
    Guest(const Guest&) = delete;
    Guest& operator=(const Guest&) = delete;
    int& living;
    int number;
};

TEST(HandOver, NewestWinsAndTheReplacedIsFreedByControl) {
    int alive = 0;
    {
        HandOver<Guest> handOver;
        handOver.Publish(std::make_unique<Guest>(alive, 1));
        handOver.Publish(std::make_unique<Guest>(alive, 2));
        EXPECT_EQ(alive, 1) << "never taken, freed at once";
        handOver.TakeNext();
        handOver.Publish(std::make_unique<Guest>(alive, 3));
        int from = 0;
        const unsigned violations = Tests::ViolationsOf([&] {
            handOver.TakeNext([&](Guest&, const Guest* replaced) { from = replaced->number; });
            handOver.TakeNext([&](Guest&, const Guest*) { from = -1; });
        });
        EXPECT_EQ(violations, 0u);
        EXPECT_EQ(from, 2);
        EXPECT_EQ(handOver.Live()->number, 3);
        EXPECT_EQ(alive, 2) << "audio gave 2 back, nobody has collected it yet";
        handOver.Publish(std::make_unique<Guest>(alive, 4));
        EXPECT_EQ(alive, 2);
        handOver.TakeNext();
        EXPECT_EQ(handOver.Live()->number, 4);
    }
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace tav
