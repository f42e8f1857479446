// SPDX-License-Identifier: MIT
#include "processors/VelkDspHandOver.h"

#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <memory>

namespace tav {
namespace {

TEST(SharedCell, GivesEachStoreOnceTheNewestOnly) {
    SharedCell<int> cell;
    int value = 0;
    EXPECT_FALSE(cell.Take(value)) << "nothing was stored";
    cell.Store(1);
    cell.Store(2);
    ASSERT_TRUE(cell.Take(value));
    EXPECT_EQ(value, 2);
    EXPECT_FALSE(cell.Take(value));
    cell.Store(2);
    EXPECT_TRUE(cell.Take(value)) << "the same values again are news";
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
