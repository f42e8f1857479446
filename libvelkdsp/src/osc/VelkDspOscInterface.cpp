// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscInterface.h"

#include "osc/VelkDspOscPreset.h"
#include "text/VelkDspException.h"

#include <optional>

namespace tav {

void OscInterface::ExportPreset(const std::filesystem::path& file) const {
    SaveOscPreset(file, OscState());
}

std::vector<OSCMessage> OscInterface::ReadPreset(const std::filesystem::path& file) const {
    const std::u8string name8 = file.u8string();
    const std::string name(name8.begin(), name8.end());
    std::vector<OSCMessage> messages;
    LoadOscPreset(file).ForEachMessage([&](const OSCMessage& message) {
        messages.push_back(message);
        const std::string place = name + ": message " + std::to_string(messages.size()) + ": ";
        try {
            if (AcceptsOsc(message)) return;
        } catch (const Exception& refusal) {
            throw Exception(place + refusal.Message());
        }
        throw Exception(place + message.AddressText() + " is not for this object");
    });
    return messages;
}

void OscInterface::LoadPreset(const std::filesystem::path& file) {
    std::optional<Exception> first;
    for (const OSCMessage& message : ReadPreset(file)) {
        try {
            ProcessOsc(message);  // whether it is taken has been asked; values may still be refused
        } catch (const Exception& refusal) {
            if (!first) first = refusal;
        }
    }
    if (first) throw Exception(*first);
}

}  // namespace tav
