// SPDX-License-Identifier: MIT
// Any bytes as a preset of each format (chosen by the first byte): what was read is written and
// read again unchanged.
#include "osc/VelkDspOscPreset.h"
#include "text/VelkDspException.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto format = static_cast<tav::OscPresetFormat>(data[0] % 4);
    const std::string content(reinterpret_cast<const char*>(data) + 1, size - 1);
    tav::OSCBundle preset;
    try {
        preset = tav::ReadOscPreset(content, format);
    } catch (const tav::Exception&) {
        return 0;
    }
    // An exception that leaves the program from here on is a fault, too.
    const std::string once = tav::WriteOscPreset(preset, format);
    if (tav::WriteOscPreset(tav::ReadOscPreset(once, format), format) != once) std::abort();
    return 0;
}
