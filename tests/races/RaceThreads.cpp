// SPDX-License-Identifier: MIT
#include "races/RaceThreads.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace Tests {

std::chrono::milliseconds ScenarioTime() {
    const char* const effort = std::getenv("QUILO_EFFORT");
    const double factor = effort != nullptr ? std::atof(effort) : 1.0;
    return std::chrono::milliseconds(static_cast<long long>(1000.0 * std::clamp(factor, 0.1, 1e4)));
}

Fault RunThreads(const std::function<Fault()>& own,
                 const std::vector<std::function<void(std::mt19937&)>>& others,
                 std::chrono::milliseconds time,
                 Setters setters) {
    std::mutex turn;
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    threads.reserve(others.size());
    for (const auto& other : others) {
        threads.emplace_back([&, setters, seed = threads.size()] {
            std::mt19937 random(static_cast<unsigned>(seed));
            while (!isOver.load(std::memory_order_relaxed)) {
                std::unique_lock lock(turn, std::defer_lock);
                if (setters == Setters::OneAtATime) lock.lock();
                other(random);
            }
        });
    }
    const auto end = std::chrono::steady_clock::now() + time;
    Fault fault;
    while (fault.empty() && std::chrono::steady_clock::now() < end) fault = own();
    isOver = true;
    for (std::thread& thread : threads) thread.join();
    return fault;
}

}  // namespace Tests
