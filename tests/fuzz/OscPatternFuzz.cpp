// SPDX-License-Identifier: MIT
// Any two texts as address pattern and address: a text without a pattern matches itself alone, and
// a star before and behind a pattern matches whatever it matches.
#include "osc/VelkDspOscAddress.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view both(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(both.find('\n'), size);
    const std::string pattern(both.substr(0, end));
    const std::string_view text = both.substr(std::min(end + 1, size));
    const bool matches = tav::OscPartMatches(pattern, text);
    if (!tav::IsOscPattern(pattern) && matches != (pattern == text)) std::abort();
    const std::string wider = '*' + pattern + '*';
    if (matches && wider.size() <= 256 && !tav::OscPartMatches(wider, text)) std::abort();
    const tav::OSCAddress address(pattern);
    if (matches && text.find('/') == text.npos && pattern.find('/') == pattern.npos &&
        !text.empty() && !pattern.empty() &&
        !tav::OscAddressMatches(address, tav::OSCAddress(text))) {
        std::abort();
    }
    return 0;
}
