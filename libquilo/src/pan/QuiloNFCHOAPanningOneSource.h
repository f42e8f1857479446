// SPDX-License-Identifier: MIT
// One source of a near-field compensated panner: how near it is, and how that glides.
#pragma once

#include "math/VelkDspCartesian.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspRamp.h"

#include <cstdint>

namespace Quilo {

/// Control sets the ratio array radius / distance, audio glides towards it.
class NFCHOAPanningOneSource {
public:
    /// Thread: control.
    void SetCompensation(bool on) { isCompensated_ = on; }
    bool Compensation() const { return isCompensated_; }
    /// A distance below 0.1 m counts as 0.1 m; without compensation the ratio is 1.
    void SetPlace(const tav::CartesianVector& position,
                  float radius,
                  float glideMs,
                  bool immediate) noexcept;

    /// Looks for a new target.  Thread: audio, once per block.
    void TakeTarget() noexcept TAV_NONBLOCKING;
    /// Thread: audio.
    tav::Ramp& Ratio() noexcept TAV_NONBLOCKING { return ratio_; }

private:
    struct Target {
        float ratio = 1.f;
        float jump = 1.f;  // the newest ratio that was set as immediate
        float glideMs = 0.f;
        std::uint32_t numJumps = 0;  // when it has grown, the ratio first jumps to `jump`
    };

    // control only
    bool isCompensated_ = true;
    Target newest_;
    // shared: control writes, audio reads
    tav::SharedCell<Target> shared_;
    // audio only
    Target taken_;
    tav::Ramp ratio_{1.f};
};

}  // namespace Quilo
