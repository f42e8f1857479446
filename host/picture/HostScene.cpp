// SPDX-License-Identifier: MIT
#include "picture/HostScene.h"

#include <algorithm>
#include <cmath>

namespace Quilo::Host {

namespace {

constexpr std::size_t kMostSlots = 1000;

std::vector<tav::CartesianVector> Points(std::span<const float> numbers) {
    std::vector<tav::CartesianVector> points;
    for (std::size_t k = 0; k + 2 < numbers.size(); k += 3)
        points.push_back({numbers[k], numbers[k + 1], numbers[k + 2]});
    return points;
}

}  // namespace

double DistanceOf(const tav::CartesianVector& position) {
    return std::hypot(static_cast<double>(position.x), static_cast<double>(position.y),
                      static_cast<double>(position.z));
}

double ReachOf(const Scene& scene) {
    std::vector<double> distances;
    const auto take = [&](const std::vector<tav::CartesianVector>& positions) {
        for (const auto& position : positions)
            if (const double distance = DistanceOf(position); std::isfinite(distance))
                distances.push_back(distance);
    };
    take(scene.speakers);
    if (distances.empty())
        for (const auto& moment : scene.path) take(moment.sources);
    if (distances.empty()) return 20;
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::ranges::nth_element(distances, middle);
    return 20 * std::max(*middle, 0.25);
}

SceneRecorder::SceneRecorder(Scene scene, std::size_t numOutlets, std::uint64_t numFrames)
    : scene_(std::move(scene)),
      numFrames_(numFrames),
      numSlots_(static_cast<std::size_t>(std::min<std::uint64_t>(numFrames, kMostSlots))) {
    scene_.seconds = static_cast<double>(numFrames) / scene_.rateHz;
    scene_.power.assign(numOutlets, std::vector<double>(numSlots_, 0.0));
}

std::uint64_t SceneRecorder::SlotStart(std::size_t slot) const {
    // Quotient and remainder apart, so that no length of run overflows the product.
    const std::uint64_t whole = numFrames_ / numSlots_, rest = numFrames_ % numSlots_;
    return slot * whole + slot * rest / numSlots_;
}

std::size_t SceneRecorder::SlotOf(std::uint64_t frame) const {
    auto slot =
        static_cast<std::size_t>(static_cast<double>(frame) / static_cast<double>(numFrames_) *
                                 static_cast<double>(numSlots_));
    slot = std::min(slot, numSlots_ - 1);
    while (slot > 0 && SlotStart(slot) > frame) --slot;
    while (slot + 1 < numSlots_ && SlotStart(slot + 1) <= frame) ++slot;
    return slot;
}

bool SceneRecorder::WantsPositions(std::uint64_t frame) const { return frame >= nextPositions_; }

void SceneRecorder::AddPositions(std::uint64_t frame,
                                 std::span<const float> sources,
                                 std::span<const float> speakers) {
    if (numSlots_ > 0) nextPositions_ = SlotStart(SlotOf(frame) + 1);
    if (!speakers.empty()) scene_.speakers = Points(speakers);
    if (!sources.empty())
        scene_.path.push_back({static_cast<double>(frame) / scene_.rateHz, Points(sources)});
}

void SceneRecorder::AddSamples(std::size_t outlet,
                               std::uint64_t frame,
                               std::span<const double> samples) {
    while (!samples.empty()) {
        const std::size_t slot = SlotOf(frame);
        const std::uint64_t start = SlotStart(slot), end = SlotStart(slot + 1);
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(samples.size(), end - frame));
        double sum = 0;
        for (const double sample : samples.first(count)) sum += sample * sample;
        scene_.power[outlet][slot] += sum / static_cast<double>(end - start);
        samples = samples.subspan(count);
        frame += count;
    }
}

Scene SceneRecorder::Finish() { return std::move(scene_); }

}  // namespace Quilo::Host
