// SPDX-License-Identifier: MIT
#include "pan/QuiloHOAPanning.h"

#include "kernels/VelkDspHoaBatch.h"
#include "math/VelkDspKeywords.h"
#include "math/VelkDspMatrix.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>

namespace Quilo {

using tav::HoaEncodingVector;
using tav::SphericalHarmonic;

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

std::string HoaOutputLabel(unsigned output, unsigned dimension) {
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

HOAPanning::HOAPanning(unsigned numInputs, unsigned numOutputs, unsigned dimension)
    : AmplitudePanning(numInputs, numOutputs),
      encoding_(HoaOrderOf(numOutputs, dimension), dimension, DefaultNormalization(dimension)),
      order_(encoding_.Order()) {}

std::string HOAPanning::OutputLabel(unsigned output) const {
    return output < NumOutputs() ? HoaOutputLabel(output, encoding_.Dimension()) : "dumpout";
}

unsigned HOAPanning::GetOrder() const {
    const ControlLock lock = LockControl();
    return order_;
}

void HOAPanning::SetOrder(unsigned order) {
    const ControlLock lock = LockControl();
    const unsigned possible = std::min(order, encoding_.Order());
    if (possible == order_) return;
    order_ = possible;
    RecomputeSources();
}

void HOAPanning::SetNormalization(SphericalHarmonic::Normalization normalization) {
    const ControlLock lock = LockControl();
    const auto possible = NormalizationFor(encoding_.Dimension(), normalization);
    if (possible == encoding_.GetNormalization()) return;
    encoding_.SetNormalization(possible);
    RecomputeSources();
}

SphericalHarmonic::Normalization HOAPanning::GetNormalization() const {
    const ControlLock lock = LockControl();
    return encoding_.GetNormalization();
}

void HOAPanning::SetComputationMode(std::string_view keyword) {
    if (const auto mode = tav::HoaModeKeywords().Parse(keyword)) SetComputationMode(*mode);
}

void HOAPanning::SetComputationMode(HoaEncodingVector::Mode mode) {
    const ControlLock lock = LockControl();
    if (mode == encoding_.GetMode()) return;
    encoding_.SetMode(mode);
    RecomputeSources();
}

HoaEncodingVector::Mode HOAPanning::GetComputationMode() const {
    const ControlLock lock = LockControl();
    return encoding_.GetMode();
}

void HOAPanning::Dump(std::vector<std::string>& lines) {
    const ControlLock lock = LockControl();
    AmplitudePanning::Dump(lines);
    HoaState state;
    state.order = order_;
    state.normalization = encoding_.GetNormalization();
    state.mode = encoding_.GetMode();
    AppendHoaLines(lines, state);
}

void HOAPanning::ComputeGains(unsigned,
                              const tav::CartesianVector& source,
                              std::span<float> gains) {
    encoding_.Compute(source, gains);
    LimitOrder(gains);
}

void HOAPanning::RecomputeAll(bool immediate) {
    tav::Matrix<float> gains(NumInputs(), NumOutputs());
    tav::ComputeHoaGains(encoding_, StoredPositions(), gains);
    for (unsigned i = 0; i < NumInputs(); ++i) {
        LimitOrder(gains.Row(i));
        SetGains(i, gains.Row(i), immediate);
    }
}

void HOAPanning::LimitOrder(std::span<float> gains) const {
    const unsigned inUse = SphericalHarmonic::NumChannels(order_, encoding_.Dimension());
    if (inUse < gains.size()) std::ranges::fill(gains.subspan(inUse), 0.f);
}

}  // namespace Quilo
