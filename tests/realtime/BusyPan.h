// SPDX-License-Identifier: MIT
// A panner under load: whatever control can do to it between two blocks, and blocks through every
// door of the audio thread.
#pragma once

#include "math/VelkDspCartesian.h"
#include "pan/QuiloPan.h"

#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace Tests {

struct PanSize {
    unsigned numInputs, numOutputs;
};

/// Between them they give every type of the factory a panner of its own.
inline constexpr PanSize kPanSizes[] = {{1, 1}, {2, 2}, {3, 3}, {4, 4},   {2, 5},
                                        {5, 8}, {4, 9}, {0, 2}, {16, 24}, {12, 25}};

class BusyPan {
public:
    BusyPan(Quilo::Pan::Type type, Quilo::Pan::SubType subtype, PanSize size);

    /// A panner with its default loudspeakers, on air.
    explicit BusyPan(std::unique_ptr<Quilo::Pan> pan);

    /// One to three changes of anything.  Thread: control, any number at a time.
    void Disturb(std::mt19937& random);

    /// Blocks of many lengths through Process, ProcessHost (with mute and bypass) and Perform.
    /// Some inputs are no numbers.  Thread: audio.
    void Play() noexcept;

    /// Nothing that Play left in the outputs is no number.
    bool Finite() const;

private:
    void Move(std::mt19937& random);
    void Reshape(std::mt19937& random);
    void Announce(std::mt19937& random);
    void SendOsc(unsigned source, std::mt19937& random);
    void TurnTheirOwn(unsigned source, std::mt19937& random);

    const std::unique_ptr<Quilo::Pan> pan_;
    std::vector<double> doubles_;
    std::vector<float> floats_;
    std::vector<const double*> doubleInputs_;
    std::vector<double*> doubleOutputs_;
    std::vector<const float*> floatInputs_;
    std::vector<float*> floatOutputs_;
};

/// One thread makes that many changes, and `audio` plays until it has: it is called once, on this
/// thread, and calls `play`.
void PlayAmidChanges(BusyPan& pan,
                     int changes,
                     const std::function<void(const std::function<void()>& play)>& audio);

/// Every type by its number.
inline constexpr int kNumPanTypes = static_cast<int>(Quilo::Pan::Type::Null) + 1;
inline constexpr int kNumPanSubTypes = static_cast<int>(Quilo::Pan::SubType::Null) + 1;

}  // namespace Tests
