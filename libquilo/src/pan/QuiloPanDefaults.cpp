// SPDX-License-Identifier: MIT
#include "pan/QuiloPanDefaults.h"

#include "laws/QuiloDefaultLayouts.h"

namespace Quilo {

namespace {

LayoutKind LayoutKindOf(Pan::Type type) {
    switch (type) {
        case Pan::Type::Surround: return LayoutKind::Surround;
        case Pan::Type::Vbap:
        case Pan::Type::Vbip:
        case Pan::Type::Dbap3D:
        case Pan::Type::Vdbap: return LayoutKind::Periphonic;
        default: return LayoutKind::Horizontal;
    }
}

}  // namespace

tav::CartesianArray DefaultSpeakersFor(Pan::Type type, unsigned numSpeakers) {
    return DefaultSpeakers(LayoutKindOf(type), numSpeakers);
}

}  // namespace Quilo
