// SPDX-License-Identifier: MIT
// Plays signals through anything that works in blocks, as a host does.
#pragma once

#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Tests {

template <class Sample>
using Channels = std::vector<std::vector<Sample>>;

inline constexpr auto kNothing = [](std::size_t) {};

/// What perform(outputs, inputs, frames) makes of the inputs in blocks of one size, the last one
/// shorter; none may allocate or lock. Outputs begin full of old data.
/// @param before  called with the first frame of each block, in front of it
template <class Sample, class Perform, class Before = decltype(kNothing)>
Channels<Sample> PlayBlocks(const Channels<Sample>& inputs,
                            std::size_t numOutputs,
                            std::size_t frames,
                            std::size_t blockSize,
                            Perform perform,
                            Before before = kNothing) {
    Channels<Sample> outputs(numOutputs, std::vector<Sample>(frames, Sample{99}));
    std::vector<const Sample*> in(inputs.size());
    std::vector<Sample*> out(numOutputs);
    unsigned violations = 0;
    for (std::size_t done = 0; done < frames; done += blockSize) {
        before(done);
        for (std::size_t i = 0; i < in.size(); ++i) in[i] = inputs[i].data() + done;
        for (std::size_t o = 0; o < out.size(); ++o) out[o] = outputs[o].data() + done;
        const auto count = static_cast<unsigned>(std::min(blockSize, frames - done));
        violations += ViolationsOf([&] { perform(out.data(), in.data(), count); });
    }
    EXPECT_EQ(violations, 0u) << "allocations, releases and locks";
    return outputs;
}

}  // namespace Tests
