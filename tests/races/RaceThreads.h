// SPDX-License-Identifier: MIT
// Threads that are let loose on one thing for a while.
#pragma once

#include <chrono>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace Tests {

using Fault = std::string;  // empty: none

/// One second, times the environment variable QUILO_EFFORT.
std::chrono::milliseconds ScenarioTime();

enum class Setters { OneAtATime, AllAtOnce };

/// Calls `own` over and over in this thread and each of `others` in one of its own until the time
/// is over or `own` finds a fault.
/// @param setters  whether the others take turns under a lock, as an owner holds it round its
/// setters
Fault RunThreads(const std::function<Fault()>& own,
                 const std::vector<std::function<void(std::mt19937&)>>& others,
                 std::chrono::milliseconds time = ScenarioTime(),
                 Setters setters = Setters::OneAtATime);

/// An object of the module under messages from all threads of a host, through its door and dsp64.
Fault ObjectsOutliveAHost();

}  // namespace Tests
