// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscInterface.h"

#include "osc/VelkDspOscPreset.h"
#include "text/VelkDspException.h"

#include <atomic>
#include <optional>

namespace tav {

namespace {

/// A preset that loads presets could load itself without end.
class LoadingScope {
public:
    LoadingScope(std::atomic<bool>& isLoading, const std::string& name) : isLoading_(isLoading) {
        if (isLoading_.exchange(true)) throw Exception(name + ": a preset loads no other");
    }
    LoadingScope(const LoadingScope&) = delete;
    LoadingScope& operator=(const LoadingScope&) = delete;
    ~LoadingScope() { isLoading_ = false; }

private:
    std::atomic<bool>& isLoading_;
};

Exception NotForThisObject(const OSCMessage& message) {
    return Exception(message.AddressText() + " is not for this object");
}

}  // namespace

void OscInterface::ExportPreset(const std::filesystem::path& file) const {
    SaveOscPreset(file, OscState());
}

void OscInterface::LoadPreset(const std::filesystem::path& file) {
    const std::u8string name8 = file.u8string();
    const std::string name(name8.begin(), name8.end());
    const LoadingScope scope(isLoading_, name);
    const OSCBundle preset = LoadOscPreset(file);
    int number = 0;
    preset.ForEachMessage([&](const OSCMessage& message) {
        ++number;
        bool isAccepted = false;
        try {
            isAccepted = AcceptsOsc(message);
        } catch (const Exception& refusal) {
            throw Exception(name + ": " + refusal.Message());
        }
        if (isAccepted) return;
        throw Exception(name + ": message " + std::to_string(number) + ": " +
                        NotForThisObject(message).Message());
    });
    std::optional<Exception> first;
    preset.ForEachMessage([&](const OSCMessage& message) {
        try {
            if (!ProcessOsc(message)) throw NotForThisObject(message);
        } catch (const Exception& refusal) {
            if (!first) first = refusal;
        }
    });
    if (first) throw Exception(*first);
}

bool OscValueFits(const OscValue& value, char format) noexcept TAV_NONBLOCKING {
    const bool isInteger = value.tag == 'i' || value.tag == 'h';
    switch (format) {
        case 'b': return isInteger || value.tag == 'T' || value.tag == 'F';
        case 'i':
        case 'l': return isInteger;
        case 'n': return isInteger || value.tag == 'f' || value.tag == 'd';
        case 'u': return isInteger && value.integer >= 0;
        case 'd':
        case 'f':
        case 's': return value.tag == format;
        default: return false;
    }
}

bool OscArgumentsFit(const OscMessageView& message,
                     std::string_view format,
                     bool isExact) noexcept TAV_NONBLOCKING {
    if (message.tags.size() < format.size()) return false;
    if (isExact && message.tags.size() > format.size()) return false;
    OscReader reader(message.arguments);
    for (std::size_t k = 0; k < format.size(); ++k) {
        OscValue value;
        if (!reader.ReadArgument(message.tags[k], value) || !OscValueFits(value, format[k])) {
            return false;
        }
    }
    return true;
}

bool OscFlag(const OscValue& value) noexcept TAV_NONBLOCKING {
    if (value.tag == 'i' || value.tag == 'h') return value.integer == 1;
    return value.tag == 'T';
}

}  // namespace tav
