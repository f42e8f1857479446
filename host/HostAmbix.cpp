// SPDX-License-Identifier: MIT
#include "HostAmbix.h"

#include "HostFault.h"
#include "HostObject.h"
#include "laws/QuiloBformatLaw.h"
#include "math/VelkDspKeywords.h"

#include <algorithm>

namespace Quilo::Host {

namespace {

using Normalization = tav::SphericalHarmonic::Normalization;

[[noreturn]] void Refuse(const std::string& why) {
    throw Fault(ExitStatus::WrongInput, "--ambix: " + why);
}

/// Dimension of the ambisonic field of a type of panner; 0 when the outlets are not ambisonic.
unsigned DimensionOf(const std::string& type) {
    if (type == "hoa2d" || type == "nfchoa2d") return 2;
    return type == "hoa3d" || type == "nfchoa3d" ? 3 : 0;
}

/// The normalisation that the attribute prints; the default of the dimension when there is none or
/// it is not meant for the dimension.
Normalization NormalizationOf(const std::string& printed, unsigned dimension) {
    for (const auto& row : tav::NormalizationKeywords().Rows())
        if (row.printed == printed && tav::SphericalHarmonic::IsAllowed(row.code, dimension))
            return row.code;
    return dimension == 2 ? Normalization::SN2D : Normalization::SN3D;
}

}  // namespace

bool IsAmbisonic(const Object& object) {
    const std::string type = object.AttributeText("type");
    return DimensionOf(type) != 0 ||
           (type == "bformat" && object.AttributeText("subtype") != "diffuse");
}

std::vector<tav::AmbixChannel> PlainChannels(std::size_t numOutlets) {
    std::vector<tav::AmbixChannel> channels(numOutlets);
    for (unsigned k = 0; k < numOutlets; ++k) channels[k] = {k, 1.0};
    return channels;
}

AmbixOutlets::AmbixOutlets(const Object& object)
    : type_(object.AttributeText("type")),
      dimension_(DimensionOf(type_)) {
    const auto numOutlets = static_cast<unsigned>(object.NumSignalOutlets());
    const std::string outlets = std::to_string(numOutlets) + " outlets of " + type_;
    if (!IsAmbisonic(object)) Refuse("the " + outlets + " are no ambisonic field");
    if (dimension_ == 0) {
        if (numOutlets != 4) Refuse("the " + outlets + " are no full field, 4 are");
        channels_ = BformatToAmbix();
        return;
    }
    const int order = tav::SphericalHarmonic::OrderFromChannelCount(numOutlets, dimension_);
    if (order < 0) Refuse("the " + outlets + " are no whole order");
    order_ = static_cast<unsigned>(order);
    Follow(object);
}

void AmbixOutlets::Follow(const Object& object) {
    if (dimension_ == 0 || !object.Get()) return;
    const std::string encoding = object.AttributeText("encoding");
    if (encoding == encoding_) return;
    auto channels = tav::AmbixFromHoa(order_, dimension_, NormalizationOf(encoding, dimension_));
    if (channels.empty())
        Refuse("the encoding " + encoding + " has no channels of order " + std::to_string(order_));
    channels_ = std::move(channels);
    encoding_ = encoding;
}

}  // namespace Quilo::Host
