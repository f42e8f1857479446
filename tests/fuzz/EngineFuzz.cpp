// SPDX-License-Identifier: MIT
// Any panner, any sequence of control operations and blocks: outputs stay finite, nothing escapes
// but the exceptions that the setters document.
#include "fuzz/FuzzInput.h"
#include "math/VelkDspCoordinates.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloPan.h"
#include "text/VelkDspException.h"

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

class Session {
public:
    explicit Session(FuzzInput& input)
        : input_(input),
          numInputs_(input.Below(5)),
          numOutputs_(input.Below(9)),
          pan_(Quilo::Pan::Create(numInputs_,
                                  numOutputs_,
                                  static_cast<Quilo::Pan::Type>(input.Below(24)),
                                  static_cast<Quilo::Pan::SubType>(input.Below(9)))) {
        pan_->SetSampleRate(48000.f);
        pan_->SetBufferSize(64);
    }

    void Run() {
        for (int step = 0; step < 64 && !input_.Empty(); ++step) {
            try {
                Operation();
            } catch (const tav::Exception&) {
                // a refused layout stays in force; the object goes on
            }
        }
        Block(64);
    }

private:
    void Operation() {
        switch (input_.Below(9)) {
            case 0: return MoveSource();
            case 1: return pan_->SetSpeakersPositions(Positions(input_.Below(10)));
            case 2:
                return pan_->SetSourcesPositions(Positions(input_.Below(6)), input_.Below(2) != 0);
            case 3: return pan_->SetInterpolationTime(input_.Take<float>());
            case 4: return pan_->SetSourceSpread(input_.Below(6), input_.Take<float>());
            case 5: return pan_->SetSourceMute(input_.Below(6), input_.Below(2) != 0);
            case 6: return pan_->SetSampleRate(input_.Take<float>());
            case 7: {
                std::vector<std::string> lines;
                return pan_->Dump(lines);
            }
            default: return Block(1 + input_.Below(200));
        }
    }

    void MoveSource() {
        const unsigned index = input_.Below(6);
        tav::CartesianVector position =
            index < numInputs_ ? pan_->SourcePosition(index) : tav::CartesianVector{};
        const float values[] = {input_.Take<float>(), input_.Take<float>(), input_.Take<float>()};
        const auto format = static_cast<tav::Coordinates::Format>(input_.Below(24));
        if (!tav::Coordinates::Apply(position, format, values)) return;
        if (!tav::IsFinite(position)) std::abort();
        pan_->SetSourcePosition(index, position, input_.Below(2) != 0, input_.Below(2) != 0);
    }

    tav::CartesianArray Positions(unsigned count) {
        tav::CartesianArray positions(count);
        for (auto& p : positions)
            p = {input_.Take<float>(), input_.Take<float>(), input_.Take<float>()};
        return positions;
    }

    void Block(unsigned frames) {
        std::vector<std::vector<double>> in(numInputs_,
                                            std::vector<double>(frames, input_.Take<double>()));
        std::vector<std::vector<double>> out(numOutputs_,
                                             std::vector<double>(frames, std::nan("")));
        std::vector<double*> ins, outs;
        for (auto& channel : in) ins.push_back(channel.data());
        for (auto& channel : out) outs.push_back(channel.data());
        pan_->ProcessHost(outs.data(), ins.data(), frames, false, false);
        for (const auto& channel : out)
            for (const double sample : channel)
                if (!std::isfinite(sample)) std::abort();
    }

    FuzzInput& input_;
    unsigned numInputs_, numOutputs_;
    std::unique_ptr<Quilo::Pan> pan_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    Session(input).Run();
    return 0;
}
