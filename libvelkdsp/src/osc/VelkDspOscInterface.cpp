// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscInterface.h"

#include "osc/VelkDspOscPreset.h"
#include "text/VelkDspException.h"

#include <optional>

namespace tav {

void OscInterface::ExportPreset(const std::filesystem::path& file) const {
    SaveOscPreset(file, OscState());
}

void OscInterface::LoadPreset(const std::filesystem::path& file) {
    const std::u8string name8 = file.u8string();
    const std::string name(name8.begin(), name8.end());
    const OSCBundle preset = LoadOscPreset(file);
    int number = 0;
    preset.ForEachMessage([&](const OSCMessage& message) {
        const std::string place = name + ": message " + std::to_string(++number) + ": ";
        try {
            if (AcceptsOsc(message)) return;
        } catch (const Exception& refusal) {
            throw Exception(place + refusal.Message());
        }
        throw Exception(place + message.AddressText() + " is not for this object");
    });
    std::optional<Exception> first;
    preset.ForEachMessage([&](const OSCMessage& message) {
        try {
            ProcessOsc(message);  // whether it is taken has been asked; values may still be refused
        } catch (const Exception& refusal) {
            if (!first) first = refusal;
        }
    });
    if (first) throw Exception(*first);
}

}  // namespace tav
