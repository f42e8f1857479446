// SPDX-License-Identifier: MIT
// What the tests of all kernels share: every instruction set that this machine runs, every length
// up to beyond the largest step of a vector set, every start within a cache line, and guards around
// whatever a kernel may write.
#pragma once

#include "containers/VelkDspAlignedVector.h"
#include "kernels/VelkDspInstructionSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace Tests {

inline constexpr int kLongestRun = 67;
inline constexpr int kStarts = 16;  // floats of a cache line
inline constexpr double kEpsilon = std::numeric_limits<float>::epsilon();

/// Base of a suite that runs once per instruction set.
template <class Family>
class KernelsOf : public testing::TestWithParam<tav::InstructionSet> {
protected:
    const Family& tested_ = tav::KernelsFor<Family>(GetParam());
    const Family& plain_ = Family::Scalar();
};

#define INSTANTIATE_FOR_ALL_SETS(Suite)                           \
    INSTANTIATE_TEST_SUITE_P(                                     \
        Sets, Suite,                                              \
        testing::ValuesIn(tav::RunnableInstructionSets().begin(), \
                          tav::RunnableInstructionSets().end()),  \
        [](const auto& test) { return std::string(tav::NameOf(test.param)); })

/// Calls body(length, start) for all of them.
template <class Body>
void ForEveryLengthAndStart(int longest, Body body) {
    for (int length = 0; length <= longest; ++length) {
        for (int start = 0; start < kStarts; ++start) body(length, start);
    }
}

/// The same lengths, each with one start; all starts occur.
template <class Body>
void ForEveryLength(int longest, Body body) {
    for (int length = 0; length <= longest; ++length) body(length, 7 * length % kStarts);
}

/// Numbers that begin `start` places behind a cache line and have guards on both sides. What wrote
/// outside is found when this ends.
template <class T>
class Guarded {
public:
    Guarded(int start, const std::vector<T>& inside)
        : first_(kGuards + static_cast<std::size_t>(start)),
          count_(inside.size()),
          block_(first_ + count_ + kGuards, kGuard) {
        std::ranges::copy(inside, Data());
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    ~Guarded() {
        for (std::size_t at = 0; at < block_.size(); ++at) {
            const bool isInside = at >= first_ && at < first_ + count_;
            if (!isInside && block_[at] != kGuard) ADD_FAILURE() << "wrote outside, at " << at;
        }
    }

    T* Data() { return block_.data() + first_; }
    std::vector<T> Values() const {
        const auto first = block_.begin() + static_cast<std::ptrdiff_t>(first_);
        return {first, first + static_cast<std::ptrdiff_t>(count_)};
    }

private:
    static constexpr T kGuard = T{12345};
    static constexpr std::size_t kGuards = 64 / sizeof(T);

    std::size_t first_;
    std::size_t count_;
    tav::AlignedVector<T> block_;
};

/// @param bound  absolute
template <class T>
void ExpectNear(const std::vector<T>& got, const std::vector<T>& expected, double bound) {
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t k = 0; k < got.size(); ++k) {
        ASSERT_NEAR(static_cast<double>(got[k]), static_cast<double>(expected[k]), bound)
            << k << " of " << got.size();
    }
}

}  // namespace Tests
