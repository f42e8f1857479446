// SPDX-License-Identifier: MIT
// How the distance of a source colours its ambisonic channels.
//
// The order n of a spherical wave from the distance r, played by loudspeakers at the distance R, is
// filtered by H_n(s) = product over k of (s - c x_k / r) / (s - c x_k / R), x_k the roots of the
// reverse Bessel polynomial of degree n: 1 at high frequencies, (R / r)^n at 0 Hz. Sources and
// loudspeakers are points in two dimensions too, so these filters serve there as well.
/// @see "Spatial sound encoding including near field effect", AES 23rd conference, 2003
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace Quilo {

inline constexpr double kSpeedOfSound = 343.2;  // m/s

/// Array radius / source distance lies between 0, a plane wave, and this.
inline constexpr float kHighestNearFieldRatio = 200.f;

/// A pair of poles, or a real one, of a filter and of its high-pass.
struct NearFieldPole {
    bool isReal = false;
    double magnitude = 0.0;        // of x_k
    double damping = 0.0;          // 2 zeta of the pair x_k
    double highPassDamping = 0.0;  // 2 zeta of the pair of the Butterworth high-pass
};

/// One order, 1 or above: what does not depend on radius, distance and sample rate.
class NearFieldOrder {
public:
    explicit NearFieldOrder(unsigned order);

    /// Least damped first; a real pole last.
    const std::vector<NearFieldPole>& Poles() const { return poles_; }

    /// With more than this ratio the gain at 0 Hz would pass 40 dB.
    double CappedRatio() const { return cappedRatio_; }

    /// |H_n|.  @param ratio  R / r      @param frequency  2 pi f r / c
    double Magnitude(double ratio, double frequency) const;

    /// Where the gain falls through 20 dB, as f r / c; 0 when it nowhere passes that. A high-pass
    /// of the same order from there on keeps the gain below it at every frequency.
    /// @param logRatio  ln(R / r)      Thread: any.
    float LimitFrequency(float logRatio) const noexcept;

    /// LimitFrequency is 0 up to this ln(R / r).
    float LeastLimitedLog() const noexcept { return firstLog_; }

private:
    static constexpr std::size_t kTableSize = 64;

    double FindLimit(double ratio) const;

    std::vector<NearFieldPole> poles_;
    double cappedRatio_;
    // Limits for ln(R / r) = first + span t^2, with t in equal steps from 0 to 1: near `first` the
    // limit grows like a square root, which straight lines between these places follow better.
    float firstLog_;
    float spanLog_;
    std::array<float, kTableSize> limits_{};
};

/// The same object for everybody; made when it is first asked for and kept.
/// @param order  1 or above  Thread: control, any number.  Throws: std::bad_alloc.
const NearFieldOrder& NearFieldOrderOf(unsigned order);

}  // namespace Quilo
