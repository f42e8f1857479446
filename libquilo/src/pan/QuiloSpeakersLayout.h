// SPDX-License-Identifier: MIT
// A layout of loudspeakers on its way into a panner.
//
// Some panners compute for up to two seconds before they can use a layout. That is done on a copy
// and without the panner's lock, so that nobody who moves a source waits for it; what was computed
// is then exchanged for the layout in force, under the lock.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstdint>
#include <utility>

namespace Quilo {

class Pan;

/// Made by Pan::PrepareSpeakers, consumed by Pan::InstallSpeakers of the same panner.
class SpeakersLayout {
public:
    explicit SpeakersLayout(tav::CartesianArray positions) : positions_(std::move(positions)) {}
    virtual ~SpeakersLayout() = default;
    SpeakersLayout(const SpeakersLayout&) = delete;
    SpeakersLayout& operator=(const SpeakersLayout&) = delete;

    /// Finite; element i feeds output i, and there are no more than outputs.
    const tav::CartesianArray& Positions() const { return positions_; }

private:
    friend class Pan;

    tav::CartesianArray positions_;
    const Pan* panner_ = nullptr;
    std::uint64_t number_ = 0;  // later layouts of a panner have higher ones
};

/// A layout with what one kind of panner computes from it, in `prepared`.
/// @tparam Prepared  made from an array of positions; the installing panner swaps it with its own
template <class Prepared>
class PreparedLayout : public SpeakersLayout {
public:
    explicit PreparedLayout(tav::CartesianArray positions)
        : SpeakersLayout(std::move(positions)),
          prepared(Positions()) {}

    Prepared prepared;
};

}  // namespace Quilo
