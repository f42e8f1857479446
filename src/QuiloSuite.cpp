// SPDX-License-Identifier: MIT
#include "QuiloSuite.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace Quilo::External {

namespace {

constexpr ClassTexts kClasses[] = {
    {"quilo.pan~", "Spatial panner for loudspeakers, ambisonics and headphones",
     "<o>quilo.pan~</o> distributes any number of sources over loudspeakers, over the components "
     "of an ambisonic sound field or over the two ears of a listener, block by block, as their "
     "positions and the chosen algorithm ask for. Azimuth is in degrees, 0 to the front and "
     "positive to the right; elevation in degrees, positive upwards; distances are in metres. In "
     "Cartesian positions x points to the right, y to the front and z upwards.<br/> In the "
     "ambisonic types a source in front is encoded in the channel Y: decoders that follow the "
     "usual frame, in which it is X, want their directions turned by 90 degrees."},
};

}  // namespace

const ClassTexts& TextsOf(std::string_view name) noexcept {
    const auto* row = std::ranges::find(kClasses, name, &ClassTexts::name);
    assert(row != std::end(kClasses));
    return *row;
}

}  // namespace Quilo::External
