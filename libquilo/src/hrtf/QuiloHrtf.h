// SPDX-License-Identifier: MIT
// An HRTF set that can be loaded and asked for the direction nearest to a source.
#pragma once

#include "hrtf/QuiloHrtfData.h"
#include "math/VelkDspKdTreeHelper.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Quilo {

/// A set and what is derived from it for queries. Loaded once and shared as a constant afterwards:
/// constant functions may run in several threads.
class Hrtf {
public:
    /// The empty set.
    Hrtf() = default;
    /// Throws: as Load.
    explicit Hrtf(const std::string& path) { Load(path); }
    /// Numbers the points of `data` in their order.
    explicit Hrtf(HrtfData data);

    /// The extension decides: "hrtf" is a set file, none at all means the built-in set ("kemar",
    /// "none", ""), everything else is refused. After a failure the set is what it was before.
    /// @param path  UTF-8
    /// Thread: control; files are read.  Throws: tav::Exception.
    void Load(const std::string& path);

    /// A set that nobody changes. All who have the built-in one have the same.
    /// Thread: control; files are read.  Throws: as Load.
    static std::shared_ptr<const Hrtf> LoadShared(const std::string& path);

    const HrtfData& Data() const noexcept { return data_; }
    const tav::CartesianArray& Positions() const noexcept { return positions_; }

    /// The point nearest to `position`, among equally near ones the first; null in the empty set.
    /// Positions beyond 64 times the farthest point are taken back to that distance, where 32 bits
    /// still tell points apart.
    /// @param position  finite      Thread: any, audio included: nothing is allocated.
    const HrtfPoint* NearestPoint(const tav::CartesianVector& position) const noexcept;

    /// The same, sooner where it is the guess or next to it: for positions that move little by
    /// little.  @param guess  any number; where it is no point, that is a search
    const HrtfPoint* NearestPoint(const tav::CartesianVector& position,
                                  std::uint32_t guess) const noexcept;

    /// What users are told about the set: fields and infos, one line each.
    std::vector<std::string> InfoLines() const;

private:
    static constexpr std::size_t kNeighbours = 6;

    /// A point and the others round it.
    struct Surroundings {
        // Positions are surely nearest to this point: on a sphere, where their scalar product with
        // it is positive and its square more than `limit` times that of their length; elsewhere,
        // where the square of their distance to it is less than `limit`.
        double limit = 0.0;
        std::array<std::uint32_t, kNeighbours> neighbours{};  // nearest first
    };

    void FindSurroundings(double radius);
    bool IsSurelyNearest(std::uint32_t point, const tav::CartesianVector& position) const noexcept;

    HrtfData data_;
    tav::CartesianArray positions_;
    tav::KdTreeHelper tree_;
    float reach_ = 0.f;                       // positions are looked up within this distance
    double radius_ = 0.0;                     // of a set whose points lie on a sphere, else 0
    std::vector<Surroundings> surroundings_;  // of each point
};

}  // namespace Quilo
