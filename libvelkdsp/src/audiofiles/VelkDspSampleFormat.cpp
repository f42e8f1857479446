// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspSampleFormat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>

namespace tav {
namespace {

using Coding = SampleFormat::Coding;

struct CodingRow {
    Coding coding;
    unsigned fewestBytes, mostBytes;
};
constexpr CodingRow kCodings[] = {
    {Coding::Unsigned, 1, 1}, {Coding::Signed, 1, 4}, {Coding::Float, 4, 4},
    {Coding::Float, 8, 8},    {Coding::ALaw, 1, 1},   {Coding::MuLaw, 1, 1},
};

/// G.711, A-law: even bits are inverted; a segment of 16 steps doubles with its number, but for the
/// first two, whose steps are equal.
constexpr int ALawSample(unsigned code) noexcept {
    const unsigned plain = code ^ 0x55u;
    const unsigned segment = plain >> 4 & 7u;
    const unsigned step = (plain & 15u) * 2 + 1;  // the middle of the interval
    const auto magnitude =
        static_cast<int>(segment == 0 ? step << 3 : (step + 32) << (segment + 2));
    return (plain & 0x80u) != 0 ? magnitude : -magnitude;
}

/// G.711, µ-law: all bits are inverted; segments begin where an offset of 33 steps puts them.
constexpr int MuLawSample(unsigned code) noexcept {
    const unsigned plain = ~code & 0xFFu;
    const unsigned segment = plain >> 4 & 7u;
    const auto magnitude = static_cast<int>(((((plain & 15u) << 1) + 33) << segment) - 33) * 4;
    return (plain & 0x80u) != 0 ? -magnitude : magnitude;
}

template <class Law>
constexpr std::array<float, 256> TableOf(Law law) {
    std::array<float, 256> samples{};
    for (unsigned code = 0; code < 256; ++code) {
        samples[code] = static_cast<float>(law(code)) * 0x1p-15f;
    }
    return samples;
}

constexpr std::array<float, 256> kUnsigned8 =
    TableOf([](unsigned code) { return (static_cast<int>(code) - 128) * 256; });
constexpr std::array<float, 256> kALaw = TableOf(ALawSample);
constexpr std::array<float, 256> kMuLaw = TableOf(MuLawSample);

/// Each reads one sample from its bytes; numBytes of them.
template <const std::array<float, 256>& table>
struct TableReader {
    static constexpr std::size_t kNumBytes = 1;
    static float Read(const std::uint8_t* bytes) noexcept { return table[*bytes]; }
};

template <std::size_t numBytes, std::endian order>
struct SignedReader {
    static constexpr std::size_t kNumBytes = numBytes;
    static float Read(const std::uint8_t* bytes) noexcept {
        // In the upper bytes of 32 bits its sign bit is that of the integer.
        const auto bits =
            static_cast<std::uint32_t>(LoadNumber<order>(bytes, numBytes) << (32 - 8 * numBytes));
        return static_cast<float>(static_cast<std::int32_t>(bits)) * 0x1p-31f;
    }
};

template <class Real, class Word, std::endian order>
struct FloatReader {
    static constexpr std::size_t kNumBytes = sizeof(Real);
    static float Read(const std::uint8_t* bytes) noexcept {
        Real real;
        if constexpr (order == std::endian::native) {
            std::memcpy(&real, bytes, sizeof real);  // compilers load several of them at once
        } else {
            real = std::bit_cast<Real>(static_cast<Word>(LoadNumber<order>(bytes, sizeof real)));
        }
        return static_cast<float>(real);
    }
};

template <class Reader>
void Deinterleave(Bytes frames,
                  std::size_t numChannels,
                  float* const* channels,
                  std::size_t start) noexcept {
    constexpr std::size_t kNumBytes = Reader::kNumBytes;
    const std::size_t frameBytes = kNumBytes * numChannels;
    const std::size_t numFrames = frames.size() / frameBytes;
    if (numChannels == 2) {  // known strides are vectorised
        float* const left = channels[0] + start;
        float* const right = channels[1] + start;
        for (std::size_t k = 0; k < numFrames; ++k) {
            left[k] = Reader::Read(frames.data() + 2 * kNumBytes * k);
            right[k] = Reader::Read(frames.data() + 2 * kNumBytes * k + kNumBytes);
        }
        return;
    }
    // In tiles that stay in the nearest cache while all channels take theirs.
    constexpr std::size_t kTileFrames = 64;
    for (std::size_t first = 0; first < numFrames; first += kTileFrames) {
        const std::size_t last = std::min(first + kTileFrames, numFrames);
        for (std::size_t channel = 0; channel < numChannels; ++channel) {
            const std::uint8_t* const from = frames.data() + kNumBytes * channel;
            float* const to = channels[channel] + start;
            for (std::size_t k = first; k < last; ++k) to[k] = Reader::Read(from + k * frameBytes);
        }
    }
}

using Decode = void (*)(Bytes, std::size_t, float* const*, std::size_t) noexcept;

template <std::endian order>
Decode DecoderOf(Coding coding, unsigned numBytes) noexcept {
    switch (coding) {
        case Coding::Unsigned: return Deinterleave<TableReader<kUnsigned8>>;
        case Coding::ALaw: return Deinterleave<TableReader<kALaw>>;
        case Coding::MuLaw: return Deinterleave<TableReader<kMuLaw>>;
        case Coding::Float:
            return numBytes == 4 ? Deinterleave<FloatReader<float, std::uint32_t, order>>
                                 : Deinterleave<FloatReader<double, std::uint64_t, order>>;
        case Coding::Signed: break;
    }
    switch (numBytes) {
        case 1: return Deinterleave<SignedReader<1, order>>;
        case 2: return Deinterleave<SignedReader<2, order>>;
        case 3: return Deinterleave<SignedReader<3, order>>;
        default: return Deinterleave<SignedReader<4, order>>;
    }
}

std::uint64_t Encode(const SampleFormat& format, float sample) noexcept {
    if (format.coding == Coding::Float) {
        return format.numBytes == 4 ? std::bit_cast<std::uint32_t>(sample)
                                    : std::bit_cast<std::uint64_t>(static_cast<double>(sample));
    }
    const double fullScale = std::ldexp(1.0, static_cast<int>(8 * format.numBytes) - 1);
    const double scaled = std::isnan(sample) ? 0.0
                                             : std::clamp(static_cast<double>(sample) * fullScale,
                                                          -fullScale, fullScale - 1);
    const auto number = static_cast<std::uint64_t>(std::llround(scaled));
    return format.coding == Coding::Unsigned ? number + 128 : number;
}

}  // namespace

bool SampleFormat::IsKnown() const noexcept {
    return std::ranges::any_of(kCodings, [this](const CodingRow& row) {
        return row.coding == coding && row.fewestBytes <= numBytes && numBytes <= row.mostBytes;
    });
}

void DecodeFrames(const SampleFormat& format,
                  Bytes frames,
                  unsigned numChannels,
                  float* const* channels,
                  std::size_t start) noexcept {
    const Decode decode = format.order == std::endian::little
                              ? DecoderOf<std::endian::little>(format.coding, format.numBytes)
                              : DecoderOf<std::endian::big>(format.coding, format.numBytes);
    decode(frames, numChannels, channels, start);
}

void EncodeFrames(const SampleFormat& format,
                  std::span<std::uint8_t> frames,
                  unsigned numChannels,
                  const float* const* channels,
                  std::size_t start) noexcept {
    const std::size_t numBytes = format.numBytes;
    const std::size_t frameBytes = numBytes * numChannels;
    for (std::size_t channel = 0; channel < numChannels; ++channel) {
        const float* from = channels[channel] + start;
        for (std::size_t at = numBytes * channel; at < frames.size(); at += frameBytes) {
            StoreLittleEndian(frames.subspan(at, numBytes), Encode(format, *from++));
        }
    }
}

}  // namespace tav
