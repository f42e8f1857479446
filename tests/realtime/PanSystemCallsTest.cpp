// SPDX-License-Identifier: MIT
// Every panner of the factory plays without the kernel, whatever control did before or does
// meanwhile.
#include "support/SystemCallTrap.h"

#if defined(TRAP_CATCHES_SYSTEM_CALLS)

#include "pan/QuiloKeywords.h"
#include "realtime/BusyPan.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Tests {
namespace {

using Quilo::Pan;

const std::vector<int> kNone;

class AudioThreadOf : public testing::TestWithParam<Pan::Type> {};

std::string NameOfType(Pan::Type type) { return std::string(Quilo::PanTypeKeywords().Print(type)); }

TEST_P(AudioThreadOf, LeavesTheKernelAloneAfterChanges) {
    std::mt19937 random(1);
    for (const PanSize size : kPanSizes) {
        for (int subtype = 0; subtype < kNumPanSubTypes; ++subtype) {
            BusyPan pan(GetParam(), static_cast<Pan::SubType>(subtype), size);
            for (int changes = 0; changes < 40; ++changes) pan.Disturb(random);
            EXPECT_EQ(SystemCallsOf([&] { pan.Play(); }), kNone)
                << size.numInputs << " inputs, " << size.numOutputs << " outputs, subtype "
                << subtype;
        }
    }
}

TEST_P(AudioThreadOf, LeavesTheKernelAloneAmidChanges) {
    for (const PanSize size : kPanSizes) {
        BusyPan pan(GetParam(), Pan::SubType::Direct, size);
        std::atomic<bool> playing{false}, over{false};
        std::thread control([&] {
            std::mt19937 random(2);
            while (!playing) std::this_thread::yield();
            for (int changes = 0; changes < 200; ++changes) pan.Disturb(random);
            over = true;
        });
        const std::vector<int> calls = SystemCallsOf([&] {
            playing = true;
            while (!over) pan.Play();
        });
        control.join();
        EXPECT_EQ(calls, kNone) << size.numInputs << " inputs, " << size.numOutputs << " outputs";
    }
}

std::vector<Pan::Type> AllTypes() {
    std::vector<Pan::Type> types;
    for (int type = 0; type < kNumPanTypes; ++type) types.push_back(static_cast<Pan::Type>(type));
    return types;
}

INSTANTIATE_TEST_SUITE_P(Types, AudioThreadOf, testing::ValuesIn(AllTypes()), [](const auto& test) {
    return NameOfType(test.param);
});

}  // namespace
}  // namespace Tests

#endif
