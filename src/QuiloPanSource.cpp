// SPDX-License-Identifier: MIT
#include "QuiloPanSource.h"

#include "QuiloPanPanners.h"
#include "QuiloPanPositions.h"
#include "max/VelkMaxHandlers.h"

#include <array>
#include <string_view>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Reject;

namespace {

/// One message `source INDEX PROPERTY VALUES...`; the whole of it is kept for refusals.
struct SourceRequest {
    unsigned index = 0;  // from 0, in range
    Atoms values;        // behind the property
    Atoms message;
};

// ---- source: its properties

void SourceSpread(PanObject& object, const SourceRequest& request) {
    if (!IsOf(object, Family::Spreading)) return Error(object, kNoSpread);
    if (!request.values.AreNumbers(1)) {
        return Reject(object, kInvalidSource, request.message);
    }
    object.SetSourceSpread(request.index, static_cast<float>(request.values.Float(0)));
}

void SourceSpreadXyz(PanObject& object, const SourceRequest& request) {
    if (!request.values.AreNumbers(3)) return Error(object, kInvalidSpreadXyz);
    std::array<float, 3> xyz{};
    if (!SetSourceSpreadXyz(object, request.index, request.values.Numbers(xyz)))
        Error(object, kNoSpreadXyz);
}

void SourceNumNeighbors(PanObject& object, const SourceRequest& request) {
    if (!IsOf(object, Family::Knn)) return Error(object, kOnlyKnn);
    const Atoms& values = request.values;
    if (values.Size() != 1 || !values.IsLong(0)) return Error(object, kInvalidNumNeighbors);
    const int count = VelkMax::SaturatedInt(values.Long(0));
    if (count < 1) return Error(object, kTooFewNeighbors, count);
    object.Engine()->SetNumNeighbors(request.index, static_cast<unsigned>(count));
}

void SourceMute(PanObject& object, const SourceRequest& request) {
    if (request.values.Size() != 1 || !request.values.IsLong(0)) {
        return Reject(object, kInvalidSource, request.message);
    }
    // Deliberate: 1 mutes, every other number unmutes.
    const bool isMuted = request.values.Long(0) == 1;
    if (object.Engine() != nullptr) object.Engine()->SetSourceMute(request.index, isMuted);
}

struct SourceProperty {
    std::string_view name;
    void (*set)(PanObject& object, const SourceRequest& request);
};

// Any other word is read as a coordinate format.
// clang-format off
constexpr SourceProperty kSourceProperties[] = {
    {"spread",       SourceSpread},
    {"spreadxyz",    SourceSpreadXyz},
    {"numneighbors", SourceNumNeighbors},
    {"mute",         SourceMute},
};
// clang-format on

const SourceProperty* FindProperty(Atoms property) {
    if (!property.IsSymbol(0)) return nullptr;
    for (const SourceProperty& row : kSourceProperties) {
        if (row.name == property.Symbol(0)->s_name) return &row;
    }
    return nullptr;
}

}  // namespace

void SourceMessage(PanObject& object, Atoms atoms) {
    if (!IsIndexed(atoms)) return Reject(object, kInvalidSource, atoms);
    const t_atom_long number = atoms.Long(0);
    if (number < 1 || number > object.NumSources()) {
        return Error(object, kInvalidSourceIndex, VelkMax::SaturatedInt(number));
    }
    const auto index = static_cast<unsigned>(number - 1);
    if (const SourceProperty* property = FindProperty(atoms.From(1))) {
        return property->set(object, {index, atoms.From(2), atoms});
    }
    const auto formatted = ReadFormat(object, atoms.From(1));
    if (!formatted) return;
    tav::CartesianVector position = object.Source(index);
    if (ReadPosition(object, kSourceTexts, *formatted, position)) {
        object.MoveSource(index, position);
    }
}

}  // namespace Quilo
