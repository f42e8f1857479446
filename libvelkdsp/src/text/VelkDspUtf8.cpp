// SPDX-License-Identifier: MIT
#include "text/VelkDspUtf8.h"

#include <algorithm>

namespace tav {

namespace {

/// Well-formed sequences by their first byte; every byte after the second is 80 to BF.
/// @see The Unicode Standard, table "Well-Formed UTF-8 Byte Sequences"
struct SequenceRow {
    unsigned char lastLead;  // largest first byte; the first row that reaches a byte applies
    std::size_t length;      // 0: no character begins with these bytes
    unsigned char secondFrom, secondTo;
};

// clang-format off
constexpr SequenceRow kSequences[] = {
    {0x7f, 1, 0x00, 0x00},
    {0xc1, 0, 0x00, 0x00},
    {0xdf, 2, 0x80, 0xbf},
    {0xe0, 3, 0xa0, 0xbf},
    {0xec, 3, 0x80, 0xbf},
    {0xed, 3, 0x80, 0x9f},
    {0xef, 3, 0x80, 0xbf},
    {0xf0, 4, 0x90, 0xbf},
    {0xf3, 4, 0x80, 0xbf},
    {0xf4, 4, 0x80, 0x8f},
    {0xff, 0, 0x00, 0x00},
};
// clang-format on

}  // namespace

std::size_t Utf8CharacterLength(std::string_view text) noexcept {
    if (text.empty()) return 0;
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const auto* row = std::ranges::lower_bound(kSequences, byte(0), {}, &SequenceRow::lastLead);
    if (row->length > text.size()) return 0;
    if (row->length > 1 && (byte(1) < row->secondFrom || byte(1) > row->secondTo)) return 0;
    for (std::size_t k = 2; k < row->length; ++k)
        if (byte(k) < 0x80 || byte(k) > 0xbf) return 0;
    return row->length;
}

std::size_t FindBadUtf8(std::string_view text) noexcept {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = Utf8CharacterLength(text.substr(at));
        if (length == 0) return at;
        at += length;
    }
    return std::string_view::npos;
}

}  // namespace tav
