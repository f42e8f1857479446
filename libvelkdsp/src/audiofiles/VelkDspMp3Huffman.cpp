// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3Huffman.h"

#include "audiofiles/VelkDspMp3HuffmanTables.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace tav {
namespace {

constexpr unsigned kRootBits = 8;

/// Looks codes up by their first 8 bits and, where they are longer, by the rest in a second table.
class CodeBook {
public:
    struct Entry {
        std::uint16_t value = 0;    // 16 x + y; or where the second table begins
        std::uint8_t length = 0;    // of the code
        std::uint8_t restBits = 0;  // not 0: the second table is looked up by so many bits
    };

    CodeBook() = default;
    /// @param codes  words of 0 and 1, separated by blanks, (x, y) at place size * x + y
    CodeBook(std::string_view codes, unsigned size) : entries_(std::size_t{1} << kRootBits) {
        std::map<std::string_view, Codes> longCodes;
        for (unsigned place = 0; !codes.empty(); ++place) {
            const std::string_view code = codes.substr(0, codes.find(' '));
            codes.remove_prefix(std::min(code.size() + 1, codes.size()));
            const auto value = static_cast<std::uint16_t>(place / size * 16 + place % size);
            if (code.size() <= kRootBits) {
                Fill(0, kRootBits, code, {value, static_cast<std::uint8_t>(code.size()), 0});
            } else {
                longCodes[code.substr(0, kRootBits)].emplace_back(code.substr(kRootBits), value);
            }
        }
        for (const auto& [root, rests] : longCodes) AddRests(root, rests);
    }

    Entry Find(std::uint32_t bits) const noexcept {
        const Entry entry = entries_[bits >> (32 - kRootBits)];
        if (entry.restBits == 0) return entry;
        return entries_[entry.value + (bits << kRootBits >> (32 - entry.restBits))];
    }

private:
    using Codes = std::vector<std::pair<std::string_view, std::uint16_t>>;

    void AddRests(std::string_view root, const Codes& rests) {
        std::size_t bits = 0;
        for (const auto& [rest, value] : rests) bits = std::max(bits, rest.size());
        const std::size_t first = entries_.size();
        entries_.resize(first + (std::size_t{1} << bits));
        Fill(0, kRootBits, root,
             {static_cast<std::uint16_t>(first), 0, static_cast<std::uint8_t>(bits)});
        for (const auto& [rest, value] : rests) {
            Fill(first, bits, rest, {value, static_cast<std::uint8_t>(kRootBits + rest.size()), 0});
        }
    }

    /// Sets `entry` for all numbers of `bits` bits that begin with the code.
    void Fill(std::size_t first, std::size_t bits, std::string_view code, Entry entry) {
        std::size_t number = 0;
        for (const char digit : code) number = number << 1 | (digit == '1' ? 1u : 0u);
        const std::size_t count = std::size_t{1} << (bits - code.size());
        std::fill_n(entries_.begin() + static_cast<std::ptrdiff_t>(first + number * count), count,
                    entry);
    }

    std::vector<Entry> entries_;
};

struct PairBook {
    CodeBook book;
    unsigned numExtraBits = 0;
    bool hasCodes = false;
};

struct CodeBooks {
    CodeBooks() {
        for (unsigned select = 0; select < pairs.size(); ++select) {
            const Mp3PairTable& table = Mp3PairTableOf(select);
            if (table.size == 0) continue;
            pairs[select] = {CodeBook(table.codes, table.size), table.numExtraBits, true};
        }
        for (unsigned select = 0; select < quads.size(); ++select) {
            quads[select] = CodeBook(Mp3QuadCodes(select), 16);
        }
    }

    std::array<PairBook, 32> pairs;
    std::array<CodeBook, 2> quads;
};

const CodeBooks& Books() {
    static const CodeBooks books;
    return books;
}

/// The value behind a code: extra bits for the largest, then a sign where it is not 0.
std::int16_t TakeValue(Mp3BitReader& reader, unsigned code, unsigned numExtraBits) noexcept {
    if (code == 0) return 0;
    const unsigned magnitude = code == 15 ? code + reader.Take(numExtraBits) : code;
    return static_cast<std::int16_t>(reader.Take(1) != 0 ? -static_cast<int>(magnitude)
                                                         : static_cast<int>(magnitude));
}

std::size_t DecodePairs(Mp3BitReader& reader,
                        std::size_t end,
                        const Mp3Regions& regions,
                        Mp3Quantised& values) noexcept {
    std::size_t line = 0;
    for (std::size_t region = 0; region < regions.ends.size(); ++region) {
        const PairBook& table = Books().pairs[regions.tables[region]];
        for (; line < regions.ends[region]; line += 2) {
            if (!table.hasCodes) {
                values[line] = values[line + 1] = 0;
                continue;
            }
            const CodeBook::Entry entry = table.book.Find(reader.Peek());
            reader.Skip(entry.length);
            values[line] = TakeValue(reader, entry.value >> 4, table.numExtraBits);
            values[line + 1] = TakeValue(reader, entry.value & 15u, table.numExtraBits);
            if (reader.Position() > end) return line;
        }
    }
    return line;
}

}  // namespace

std::size_t DecodeMp3Lines(Mp3BitReader& reader,
                           std::size_t end,
                           const Mp3Regions& regions,
                           Mp3Quantised& values) noexcept {
    std::size_t line = DecodePairs(reader, end, regions, values);
    const CodeBook& book = Books().quads[regions.quadTable];
    while (reader.Position() < end && line + 4 <= values.size()) {
        const CodeBook::Entry entry = book.Find(reader.Peek());
        reader.Skip(entry.length);
        for (unsigned k = 0; k < 4; ++k) {
            values[line + k] = TakeValue(reader, entry.value >> (3 - k) & 1u, 0);
        }
        if (reader.Position() > end) break;
        line += 4;
    }
    return line;
}

}  // namespace tav
