// SPDX-License-Identifier: MIT
// Channels, orders and normalisations of spherical harmonics.
//
// A channel of an ambisonic signal is one harmonic: its order n from 0 and its degree m, -n .. n in
// three dimensions (3) and -n or n in two (2). Degrees from 0 up go with cos(m phi), negative ones
// with sin(|m| phi). The harmonics carry no Condon-Shortley phase: near phi = 0 every sine channel
// has the sign of phi.
#pragma once

#include "math/VelkDspVector.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tav {

/// Thread: any.  Throws: std::bad_alloc where a text or vector is returned, else nothing.
class SphericalHarmonic {
public:
    /// Patches store the codes, so they must not change.
    enum class Normalization : std::int32_t {
        Unnormalized,
        SN3D,
        SN2D,
        N3D,
        N2D,
        FuMa,
        MaxN,
        RONB
    };
    enum class Sorting : std::int32_t { ACN, SID, FMH };

    /// One harmonic.
    struct Degree {
        unsigned n = 0;
        int m = 0;
        friend bool operator==(const Degree&, const Degree&) = default;
    };

    /// (order + 1)^2 in three dimensions, 2 order + 1 in two, else 0.
    static unsigned NumChannels(unsigned order, unsigned dimension);
    /// Whether some order has this number of channels; one channel is order 0 in any dimension.
    static bool IsValidChannelCount(unsigned count, unsigned dimension);
    /// -1 for a count that is not valid.
    static int OrderFromChannelCount(unsigned count, unsigned dimension);
    /// @param index  from 0; the order that it belongs to is the same in every sorting
    static Degree FromChannelIndex(unsigned index, unsigned dimension, Sorting sorting);

    /// Whether the normalisation is meant for the dimension: SN3D and N3D are not for two, SN2D and
    /// N2D not for three; unknown codes for none.
    static bool IsAllowed(Normalization normalization, unsigned dimension);
    /// The factor that converts the harmonic (n, m) from one normalisation to another. 0 if the
    /// target does not have the harmonic: FuMa and MaxN above order 3, SN2D and N2D
    /// unless n = |m|. Unnormalized and RONB change the sign if m is odd.
    static float ConversionFactor(unsigned n, int m, Normalization from, Normalization to);
    /// The same before it is rounded.
    static double ExactConversionFactor(unsigned n, int m, Normalization from, Normalization to);

    /// "Y(1,-1)", or "Y(1,-1) (Y)" with the letter if there is one.
    static std::string ChannelLabel(unsigned n, int m, bool withLetter);
    /// The channel's name in B-format of the third order at most; empty above.
    static std::string_view FuMaLetter(unsigned n, int m);

    /// The Legendre polynomial of degree n.  @param x  in [-1, 1]
    static float Legendre(unsigned n, float x);
};

}  // namespace tav
