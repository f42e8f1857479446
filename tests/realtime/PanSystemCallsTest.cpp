// SPDX-License-Identifier: MIT
// Every panner of the factory plays without the kernel, the heap and locks, whatever control did
// before or does meanwhile.
#include "support/SystemCallTrap.h"

#if defined(TRAP_CATCHES_SYSTEM_CALLS)

#include "pan/QuiloKeywords.h"
#include "realtime/BusyPan.h"
#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

namespace Tests {
namespace {

using Quilo::Pan;

class AudioThreadOf : public testing::TestWithParam<int> {};

TEST_P(AudioThreadOf, LeavesTheKernelAloneAmidChanges) {
    for (const PanSize size : kPanSizes) {
        for (int subtype = 0; subtype < kNumPanSubTypes; ++subtype) {
            BusyPan pan(static_cast<Pan::Type>(GetParam()), static_cast<Pan::SubType>(subtype),
                        size);
            unsigned violations = 0;  // what needs no system call: small blocks, free locks
            std::vector<int> calls;
            PlayAmidChanges(pan, 60, [&](const std::function<void()>& play) {
                calls = SystemCallsOf([&] { violations = ViolationsOf(play); });
            });
            EXPECT_EQ(calls, std::vector<int>());
            EXPECT_EQ(violations, 0u)
                << size.numInputs << " x " << size.numOutputs << ", subtype " << subtype;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Types,
                         AudioThreadOf,
                         testing::Range(0, kNumPanTypes),
                         [](const auto& test) {
                             const auto type = static_cast<Pan::Type>(test.param);
                             return std::string(Quilo::PanTypeKeywords().Print(type));
                         });

}  // namespace
}  // namespace Tests

#endif
