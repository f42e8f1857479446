// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscArguments.h"

namespace tav {

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

bool ReadOscNumbers(const OscMessageView& message,
                    std::string_view format,
                    std::span<float> values) noexcept TAV_NONBLOCKING {
    if (message.tags.size() < format.size()) return false;
    OscReader reader(message.arguments);
    for (std::size_t k = 0; k < format.size(); ++k) {
        // Nearly all that is sent.
        if (format[k] == 'n' && message.tags[k] == 'f') {
            if (!reader.ReadFloat(values[k])) return false;
            continue;
        }
        OscValue value;
        if (!reader.ReadArgument(message.tags[k], value) || !OscValueFits(value, format[k])) {
            return false;
        }
        const bool isFlag = format[k] == 'b';
        values[k] = isFlag ? (OscFlag(value) ? 1.f : 0.f) : static_cast<float>(value.number);
    }
    return true;
}

}  // namespace tav
