// SPDX-License-Identifier: MIT
// Filters that turn what is heard from far away into what is heard from near by.
#pragma once

#include "hrtf/QuiloHrtf.h"
#include "hrtf/QuiloNearfieldShelf.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Quilo {

/// A shelf for either ear and every place near the head: that of a rigid sphere, or of the nearest
/// point of a ".near" file. Its container is that of HRTF sets; a point has one cell per ear, or
/// one cell for both: then its position counts for the right ear, and the left one is its mirror.
/// A "XITD" is what nearness adds to the delay of the left ear. Loaded once and constant
/// afterwards.
class NearfieldCompensationFilters {
public:
    /// The built-in filters, which the first call of Shelf or this makes: it takes a moment.
    NearfieldCompensationFilters() = default;
    /// Throws: as Load.
    explicit NearfieldCompensationFilters(const std::string& path) { Load(path); }

    /// After a failure the set is what it was before.
    /// @param path  UTF-8, with the extension "near"
    /// Thread: control; files are read.  Throws: tav::Exception.
    void Load(const std::string& path);

    /// The set as it was read; empty for the built-in filters.
    const Hrtf& Set() const noexcept { return set_; }
    /// Whether filters can be had from it: the built-in ones, or one cell for one or two ears.
    bool IsUsable() const noexcept { return set_.Data().points.empty() || !shelves_.empty(); }

    /// From SphereShelves::kFar on nothing changes.
    /// @param position  of the source, from the centre of the head      @param ear  0 left, 1 right
    /// Thread: any.
    NearfieldShelf Shelf(const tav::CartesianVector& position, std::size_t ear) const noexcept;
    /// Milliseconds that the left ear is later because the source is near, as measured; none where
    /// nothing was.  Thread: any.
    std::optional<float> Delay(const tav::CartesianVector& position) const noexcept;

private:
    const HrtfPoint* PointFor(const tav::CartesianVector& position, std::size_t ear) const noexcept;

    Hrtf set_;
    Hrtf places_;                          // where the points of shelves_ are looked up
    std::vector<NearfieldShelf> shelves_;  // of each point, row per ear
    bool hasDelays_ = false;
};

}  // namespace Quilo
