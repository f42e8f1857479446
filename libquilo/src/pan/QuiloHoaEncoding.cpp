// SPDX-License-Identifier: MIT
#include "pan/QuiloHoaEncoding.h"

#include "math/VelkDspKeywords.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>

namespace Quilo {

using tav::HoaEncodingVector;
using tav::SphericalHarmonic;

namespace {

/// Appends one line for each member of the state.
void AppendHoaLines(std::vector<std::string>& lines, const HoaState& state) {
    const auto flag = [](bool on) { return std::string(tav::BooleanText(on)); };
    const std::string norm(tav::NormalizationKeywords().Print(state.normalization));
    const std::string mode(tav::HoaModeKeywords().Print(state.mode, "precise"));
    lines.push_back("order : " + std::to_string(state.order));
    lines.push_back("encoding norm : " + norm);
    lines.push_back("nfc compensation : " + flag(state.nearfieldCompensation));
    lines.push_back("nfc high pass : " + flag(state.highPass));
    lines.push_back("nfc speakers radius : " + tav::NumberText(state.speakersRadius) + " m");
    lines.push_back("computation mode : " + mode);
}

}  // namespace

std::string HoaOutputLabel(unsigned output, unsigned numOutputs, unsigned dimension) {
    if (output >= numOutputs) return "dumpout";
    const auto degree =
        SphericalHarmonic::FromChannelIndex(output, dimension, SphericalHarmonic::Sorting::ACN);
    return "output #" + std::to_string(output + 1) + " : " +
           SphericalHarmonic::ChannelLabel(degree.n, degree.m, true);
}

unsigned HoaOrderOf(unsigned numOutputs, unsigned dimension) {
    const int order = SphericalHarmonic::OrderFromChannelCount(numOutputs, dimension);
    return static_cast<unsigned>(std::max(order, 0));
}

SphericalHarmonic::Normalization DefaultNormalization(unsigned dimension) {
    return dimension == 2 ? SphericalHarmonic::Normalization::SN2D
                          : SphericalHarmonic::Normalization::SN3D;
}

SphericalHarmonic::Normalization NormalizationFor(unsigned dimension,
                                                  SphericalHarmonic::Normalization wanted) {
    const bool isAllowed = SphericalHarmonic::IsAllowed(wanted, dimension);
    return isAllowed ? wanted : DefaultNormalization(dimension);
}

template <class Base>
HoaEncoding<Base>::HoaEncoding(unsigned numInputs, unsigned numOutputs, unsigned dimension)
    : Base(numInputs, numOutputs),
      dimension_(dimension),
      largestOrder_(HoaOrderOf(numOutputs, dimension)),
      encoding_(largestOrder_, dimension, DefaultNormalization(dimension)),
      order_(largestOrder_) {}

template <class Base>
std::string HoaEncoding<Base>::OutputLabel(unsigned output) const {
    return HoaOutputLabel(output, this->NumOutputs(), dimension_);
}

template <class Base>
void HoaEncoding<Base>::ApplyOrder(unsigned order) {
    const unsigned possible = std::min(order, largestOrder_);
    if (possible == order_) return;
    order_ = possible;
    OrderChanged(possible);
    this->RecomputeSources();
}

template <class Base>
void HoaEncoding<Base>::ApplyNormalization(Normalization normalization) {
    const auto possible = NormalizationFor(dimension_, normalization);
    if (possible == encoding_.GetNormalization()) return;
    encoding_.SetNormalization(possible);
    this->RecomputeSources();
}

template <class Base>
void HoaEncoding<Base>::ApplyComputationMode(Mode mode) {
    if (mode == encoding_.GetMode()) return;
    encoding_.SetMode(mode);
    this->RecomputeSources();
}

template <class Base>
std::shared_ptr<const void> HoaEncoding<Base>::MakeEncodingTable(
    Mode mode, Normalization normalization) const {
    if (mode != Mode::Fast) return nullptr;
    return tav::HoaLookupTable::Shared(largestOrder_, dimension_,
                                       NormalizationFor(dimension_, normalization));
}

template <class Base>
void HoaEncoding<Base>::Describe(std::vector<std::string>& lines) const {
    Base::Describe(lines);
    AppendHoaLines(lines, State());
}

template <class Base>
void HoaEncoding<Base>::Encode(const tav::CartesianVector& source, std::span<float> gains) {
    encoding_.Compute(source, gains);
    LimitOrder(gains);
}

template <class Base>
void HoaEncoding<Base>::LimitOrder(std::span<float> gains) const {
    const unsigned inUse = SphericalHarmonic::NumChannels(order_, dimension_);
    if (inUse < gains.size()) std::ranges::fill(gains.subspan(inUse), 0.f);
}

template <class Base>
HoaState HoaEncoding<Base>::State() const {
    HoaState state;
    state.order = order_;
    state.normalization = encoding_.GetNormalization();
    state.mode = encoding_.GetMode();
    return state;
}

template class HoaEncoding<Pan>;
template class HoaEncoding<AmplitudePanning>;

}  // namespace Quilo
