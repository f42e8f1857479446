// SPDX-License-Identifier: MIT
#include "HostScratch.h"

#include "HostConsole.h"
#include "HostFault.h"

#include <algorithm>

namespace Quilo::Host {

namespace {

constexpr unsigned kScratchVector = 16;  // frames; enough, since without interpolation gains jump

bool IsShown(const HostApi::AttributeInfo& attribute) {
    const auto invisible = std::ranges::find_if(attribute.properties, [](const auto& property) {
        return std::string_view(property.name->s_name) == "invisible";
    });
    return invisible == attribute.properties.end() || invisible->values.empty() ||
           atom_getlong(&invisible->values.front()) == 0;
}

}  // namespace

Scratch::Scratch(std::span<const Atom> box) {
    const Console::Pause nobodyListens;
    HostApi::SetAudioSettings({48000, static_cast<int>(kScratchVector), false});
    try {
        object_.Make(box);
    } catch (const Fault&) {
        object_.Free();
    }
}

Scratch::~Scratch() {
    const Console::Pause nobodyListens;
    chain_.reset();
    object_.Free();
    HostApi::SetAudioSettings(before_);
}

void Scratch::CopyAttributes(const Object& other, std::span<const std::string_view> except) {
    const Console::Pause nobodyListens;
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(other.Get())) {
        const std::string_view name = attribute.name->s_name;
        if (std::ranges::find(except, name) != except.end() || !IsShown(attribute)) continue;
        if (object_attr_usercanset(object_.Get(), attribute.name) == 0) continue;
        std::vector<t_atom> value = HostApi::AttributeValue(other.Get(), name);
        object_attr_setvalueof(object_.Get(), attribute.name, static_cast<max_long>(value.size()),
                               value.data());
    }
}

void Scratch::Send(const std::vector<Atom>& message) {
    const Console::Pause nobodyListens;
    object_.Send(message);
}

std::span<const float> Scratch::Gains() {
    const Console::Pause nobodyListens;
    const std::size_t numInputs = object_.NumSignalInlets(),
                      numOutputs = object_.NumSignalOutlets();
    if (!chain_) {
        memory_.assign((numInputs + numOutputs) * kScratchVector, 0.0);
        std::fill_n(memory_.begin(), kScratchVector, 1.0);
        for (std::size_t k = 0; k < numInputs + numOutputs; ++k)
            (k < numInputs ? inputs_ : outputs_).push_back(memory_.data() + k * kScratchVector);
        HostApi::SetAudioSettings({48000, static_cast<int>(kScratchVector), true});
        const std::vector<short> counts(numInputs + numOutputs, 1);
        chain_ = std::make_unique<HostApi::DspChain>(object_.Get(), counts);
        gains_.resize(numOutputs);
    }
    // Two vectors, because new gains may take effect in the second one only.
    for (int vector = 0; vector < 2; ++vector)
        chain_->Perform(inputs_.data(), numInputs, outputs_.data(), numOutputs, kScratchVector);
    std::ranges::transform(outputs_, gains_.begin(), [](const double* output) {
        return static_cast<float>(output[kScratchVector - 1]);
    });
    return gains_;
}

}  // namespace Quilo::Host
