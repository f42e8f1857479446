// SPDX-License-Identifier: MIT
// From (type, subtype, inputs, outputs) to a panner: two tables, read in order.
#include "pan/QuiloAmbisonicPanning.h"
#include "pan/QuiloBinauralModelPanning.h"
#include "pan/QuiloBinauralPanningContinuous.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloBinauralPanningIACC.h"
#include "pan/QuiloBinauralPanningNearfield.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloDiffusePanning.h"
#include "pan/QuiloHOAPanning.h"
#include "pan/QuiloHoaDiffusePanning.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloKnnPanning.h"
#include "pan/QuiloLayoutLawPanning.h"
#include "pan/QuiloNFCHOAPanning.h"
#include "pan/QuiloNullPanning.h"
#include "pan/QuiloPan.h"
#include "pan/QuiloRecursivePanning.h"
#include "pan/QuiloSPCAmplitudePanning.h"
#include "pan/QuiloStereoABPanning.h"
#include "pan/QuiloStereoPanning.h"
#include "pan/QuiloSubwoofersPanning.h"
#include "pan/QuiloVDbapPanning.h"
#include "pan/QuiloVbap2DPanning.h"
#include "pan/QuiloVectorBasedPanning.h"

#include <optional>

namespace Quilo {

namespace {

using Fits = bool (*)(unsigned inputs, unsigned outputs);
using Maker = std::unique_ptr<Pan> (*)(unsigned inputs, unsigned outputs);

template <class Panner>
std::unique_ptr<Pan> Make(unsigned inputs, unsigned outputs) {
    return std::make_unique<Panner>(inputs, outputs);
}

bool Always(unsigned, unsigned) { return true; }
bool Stereo(unsigned, unsigned outputs) { return outputs == 2; }
bool From1(unsigned, unsigned outputs) { return outputs >= 1; }
bool From2(unsigned, unsigned outputs) { return outputs >= 2; }
bool From3(unsigned, unsigned outputs) { return outputs >= 3; }
bool ThreeOrFour(unsigned, unsigned outputs) { return outputs == 3 || outputs == 4; }
bool StereoOfPairs(unsigned inputs, unsigned outputs) { return outputs == 2 && inputs >= 2; }
bool FixedLayouts(unsigned, unsigned outputs) {
    return (outputs >= 4 && outputs <= 8) || outputs == 12;
}
/// Channels of a whole ambisonic order: 1, 3, 5, 7, ... and 1, 4, 9, 16, ...
bool Hoa2DCount(unsigned, unsigned outputs) {
    return tav::SphericalHarmonic::IsValidChannelCount(outputs, 2);
}
bool Hoa3DCount(unsigned, unsigned outputs) {
    return tav::SphericalHarmonic::IsValidChannelCount(outputs, 3);
}

struct SubTypeRecipe {
    Pan::SubType subtype = Pan::SubType::Null;
    std::optional<Pan::Type> type;  // none: any type
    Fits fits = nullptr;
    Maker make = nullptr;
};

struct TypeRecipe {
    Pan::Type type = Pan::Type::Null;
    Fits fits = nullptr;
    Maker make = nullptr;
};

constexpr std::optional<Pan::Type> kAnyType = std::nullopt;

// The first row that agrees in subtype, type and size wins. Where none does, kByType decides.
// clang-format off
constexpr SubTypeRecipe kBySubType[] = {
    // subtype                          type                 fits           class
    {Pan::SubType::Diffuse,             Pan::Type::Binaural, StereoOfPairs, Make<BinauralPanningIACC>},
    {Pan::SubType::Diffuse,             Pan::Type::Binaural, Always,        Make<NullPanning>},
    {Pan::SubType::Diffuse,             Pan::Type::Hoa2D,    Hoa2DCount,    Make<HoaDiffusePanning2D>},
    {Pan::SubType::Diffuse,             Pan::Type::Nfchoa2D, Hoa2DCount,    Make<HoaDiffusePanning2D>},
    {Pan::SubType::Diffuse,             Pan::Type::Hoa3D,    Hoa3DCount,    Make<HoaDiffusePanning3D>},
    {Pan::SubType::Diffuse,             Pan::Type::Nfchoa3D, Hoa3DCount,    Make<HoaDiffusePanning3D>},
    {Pan::SubType::Diffuse,             kAnyType,            Always,        Make<DiffusePanning>},
    {Pan::SubType::Early,               Pan::Type::Binaural, Stereo,        Make<BinauralPanningITD>},
    {Pan::SubType::Nearfield,           Pan::Type::Binaural, Stereo,        Make<BinauralPanningNearfield>},
    {Pan::SubType::SphericalHeadModel,  Pan::Type::Binaural, Stereo,        Make<BinauralPanningSphericalHeadModel>},
    {Pan::SubType::SnowmanModel,        Pan::Type::Binaural, Stereo,        Make<BinauralPanningSnowmanModel>},
    {Pan::SubType::Continuous,          Pan::Type::Binaural, Stereo,        Make<BinauralPanningContinuous>},
};

constexpr TypeRecipe kByType[] = {
    // type                  fits          class
    {Pan::Type::Binaural,    Stereo,       Make<BinauralPanningDirect>},
    {Pan::Type::Xy,          Stereo,       Make<StereoXYPanning>},
    {Pan::Type::Ms,          Stereo,       Make<StereoMSPanning>},
    {Pan::Type::Ab,          Stereo,       Make<StereoABPanning>},
    {Pan::Type::Surround,    ThreeOrFour,  Make<SurroundPanning>},
    {Pan::Type::Panr,        FixedLayouts, Make<RecursivePanning>},
    {Pan::Type::Angular,     Always,       Make<AngularPanning>},
    {Pan::Type::Vbap2D,      From2,        Make<Vbap2DPanning>},
    {Pan::Type::Vbip2D,      From2,        Make<Vbip2DPanning>},
    {Pan::Type::Vbap,        From3,        Make<VbapPanning>},
    {Pan::Type::Vbip,        From3,        Make<VbipPanning>},
    {Pan::Type::Dbap,        From1,        Make<DbapPanning2D>},
    {Pan::Type::Dbap3D,      From1,        Make<DbapPanning3D>},
    {Pan::Type::Bformat,     ThreeOrFour,  Make<AmbisonicPanning>},
    {Pan::Type::Hoa2D,       Hoa2DCount,   Make<HOA2DPanning>},
    {Pan::Type::Hoa3D,       Hoa3DCount,   Make<HOA3DPanning>},
    {Pan::Type::Vdbap,       From3,        Make<VDbapPanning>},
    {Pan::Type::Nfchoa2D,    Hoa2DCount,   Make<NFCHOAPanning2D>},
    {Pan::Type::Nfchoa3D,    Hoa3DCount,   Make<NFCHOAPanning3D>},
    {Pan::Type::Spcap,       [](auto in, auto) { return in >= 1; /* Deliberate: in */ }, Make<SPCAmplitudePanning>},
    {Pan::Type::Knn,         From1,        Make<KnnPanning>},
    {Pan::Type::Subwoofers,  From1,        Make<SubwoofersPanning>},
};
// clang-format on

Maker FindMaker(unsigned inputs, unsigned outputs, Pan::Type type, Pan::SubType subtype) {
    for (const SubTypeRecipe& row : kBySubType) {
        const bool named = row.subtype == subtype && row.type.value_or(type) == type;
        if (named && row.fits(inputs, outputs)) return row.make;
    }
    for (const TypeRecipe& row : kByType) {
        if (row.type == type && row.fits(inputs, outputs)) return row.make;
    }
    return Make<NullPanning>;
}

/// Returns null where there is no memory.
std::unique_ptr<Pan> MakeSilent(unsigned inputs, unsigned outputs) noexcept {
    try {
        return Make<NullPanning>(inputs, outputs);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

std::unique_ptr<Pan> Pan::Create(unsigned numInputs,
                                 unsigned numOutputs,
                                 std::string_view type,
                                 std::string_view subtype) noexcept {
    try {
        return Create(numInputs, numOutputs, PanTypeKeywords().Parse(type).value_or(Type::Null),
                      PanSubTypeKeywords().Parse(subtype).value_or(SubType::Direct));
    } catch (...) {  // no memory for the keyword tables
        return Create(numInputs, numOutputs, Type::Null, SubType::Direct);
    }
}

std::unique_ptr<Pan> Pan::Create(unsigned numInputs,
                                 unsigned numOutputs,
                                 Type type,
                                 SubType subtype) noexcept {
    try {
        std::unique_ptr<Pan> pan =
            FindMaker(numInputs, numOutputs, type, subtype)(numInputs, numOutputs);
        if (dynamic_cast<const NullPanning*>(pan.get())) return pan;
        pan->type_ = type;
        pan->subType_ = subtype;
        // A source that nobody has placed yet sounds from the origin.
        const tav::ControlGuard guard(pan->controlLock_);
        pan->RecomputeAll(true);
        return pan;
    } catch (...) {
        return MakeSilent(numInputs, numOutputs);
    }
}

}  // namespace Quilo
