// SPDX-License-Identifier: MIT
// Loudspeaker layouts by the names under which studios know them.
//
// Azimuths are navigational as everywhere here: 0 in front, clockwise, the right at +90.
// Recommendation ITU-R BS.2051 counts counter-clockwise, so its M+030 stands at -30. Where it gives
// a range, the layouts below stand at the nominal angle.
//
// Low-frequency channels (labels LFE, LFE1, LFE2) have a place because every outlet of a panner has
// one: 60 degrees to the side, where nothing else stands, and 30 degrees down, left for the first
// and right for the second. Laws in space reach them only below the ears; laws in the plane and by
// distance treat them as loudspeakers like any other. The same name with a 0 in the place of their
// count ("5.0", "22.0") is the layout without them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo {

struct LoudspeakerPlace {
    std::string_view label;  // static text, one word, unique within a layout
    float azimuthDeg;        // navigational, -180 < azimuth <= 180
    float elevationDeg;      // -90 to 90, up is positive
};

/// The loudspeakers of a layout in the order of its channels, all at one distance.
/// @param name  such as "5.1.4", "octagon", or of BS.2051 by counts ("4+5+0") or letter ("D"); of
/// an even set ("icosahedron", "sphere-48"); or "fibonacci-" and a number from 1 to 250
/// @return nothing for an unknown name
/// Thread: control.
std::optional<std::vector<LoudspeakerPlace>> FindNamedLayout(std::string_view name);

/// Every name that is found, layout by layout, separated by blanks; of the Fibonacci grids none.
std::string LayoutNames();

}  // namespace Quilo
