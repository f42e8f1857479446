// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspStoredSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <string_view>

namespace tav {
namespace {

using Coding = SampleFormat::Coding;

struct AiffCompressionRow {
    std::string_view id;
    Coding coding;
    std::endian order;
    unsigned numBytes;  // 0: as the sample size says
};

// clang-format off
constexpr AiffCompressionRow kAiffCompressions[] = {
    // id     coding            order                bytes
    {"NONE", Coding::Signed,   std::endian::big,    0},
    {"twos", Coding::Signed,   std::endian::big,    0},
    {"sowt", Coding::Signed,   std::endian::little, 0},
    {"raw ", Coding::Unsigned, std::endian::big,    1},
    {"in24", Coding::Signed,   std::endian::big,    3},
    {"in32", Coding::Signed,   std::endian::big,    4},
    {"42ni", Coding::Signed,   std::endian::little, 3},  // "in24" backwards, and as libsndfile has it
    {"42n1", Coding::Signed,   std::endian::little, 3},
    {"23ni", Coding::Signed,   std::endian::little, 4},
    {"fl32", Coding::Float,    std::endian::big,    4},
    {"FL32", Coding::Float,    std::endian::big,    4},
    {"fl64", Coding::Float,    std::endian::big,    8},
    {"FL64", Coding::Float,    std::endian::big,    8},
    {"alaw", Coding::ALaw,     std::endian::big,    1},
    {"ALAW", Coding::ALaw,     std::endian::big,    1},
    {"ulaw", Coding::MuLaw,    std::endian::big,    1},
    {"ULAW", Coding::MuLaw,    std::endian::big,    1},
};
// clang-format on

constexpr std::size_t kAiffCommonBytes = 18;

/// A number of 80 bits: sign, exponent of 15 bits, mantissa of 64 bits with its leading one.
double ExtendedFloat(Bytes bytes) {
    const auto exponent = GetBigEndian<std::uint16_t>(bytes);
    const auto mantissa = GetBigEndian<std::uint64_t>(bytes.subspan(2));
    const double magnitude =
        std::ldexp(static_cast<double>(mantissa), (exponent & 0x7FFF) - 16383 - 63);
    return (exponent & 0x8000) != 0 ? -magnitude : magnitude;
}

/// One pass over the chunks, which may stand in any order.
class AiffChunks {
public:
    AiffChunks(ByteSource& source, AudioFileInfo& info) : source_(source), info_(info) {}

    StoredSamples Read() {
        if (source_.Left() < 8) source_.Fail("is no AIFF file");
        source_.Seek(source_.Position() + 4);  // the size of everything
        const std::string kind = source_.TakeId();
        isCompressed_ = kind == "AIFC";
        if (kind != "AIFF" && !isCompressed_) source_.Fail("is no AIFF file");
        while (source_.Left() >= 8 && !(commonFound_ && samplesBytes_)) {
            const std::string id = source_.TakeId();
            const auto size = GetBigEndian<std::uint32_t>(source_.Take(4));
            const std::uint64_t next = source_.Position() + size + size % 2;
            if (id == "COMM") ReadCommon(size);
            if (id == "SSND") FindSamples(size);
            source_.Seek(next);
        }
        if (!commonFound_) source_.Fail("has no COMM chunk");
        CountFrames();
        return stored_;
    }

private:
    void ReadCommon(std::uint64_t size) {
        const std::size_t needed = kAiffCommonBytes + (isCompressed_ ? 4 : 0);
        if (size < needed) source_.Fail("the COMM chunk is too small");
        if (source_.Left() < needed) source_.Fail("the COMM chunk is cut short");
        const ByteBlock block = source_.Take(needed);
        const Bytes bytes(block);
        stored_.numChannels = GetBigEndian<std::uint16_t>(bytes);
        promisedFrames_ = GetBigEndian<std::uint32_t>(bytes.subspan(2));
        stored_.sampleRateHz = ExtendedFloat(bytes.subspan(8));
        const std::string id =
            isCompressed_ ? std::string(bytes.begin() + kAiffCommonBytes, bytes.end()) : "NONE";
        stored_.format = FormatOf(id, GetBigEndian<std::uint16_t>(bytes.subspan(6)));
        if (stored_.numChannels == 0) source_.Fail("has no channels");
        // Written so that NaN fails as well.
        if (!(stored_.sampleRateHz > 0 && std::isfinite(stored_.sampleRateHz))) {
            source_.Fail("has an impossible sample rate");
        }
        commonFound_ = true;
    }

    SampleFormat FormatOf(const std::string& id, unsigned bits) const {
        const auto row = std::ranges::find(kAiffCompressions, id, &AiffCompressionRow::id);
        if (row == std::end(kAiffCompressions)) source_.Fail("has an unknown compression");
        // Samples of 12 bits fill the upper ones of 16.
        const SampleFormat format{row->coding, row->numBytes == 0 ? (bits + 7) / 8 : row->numBytes,
                                  row->order};
        if (!format.IsKnown()) source_.Fail("has samples of " + std::to_string(bits) + " bits");
        return format;
    }

    /// The samples begin behind two numbers, the first of which is how far behind.
    void FindSamples(std::uint64_t size) {
        constexpr std::uint64_t kHeadBytes = 8;
        if (size < kHeadBytes || source_.Left() < kHeadBytes) {
            source_.Fail("the SSND chunk is too small");
        }
        const auto offset = GetBigEndian<std::uint32_t>(source_.Take(kHeadBytes));
        if (offset > size - kHeadBytes) source_.Fail("the SSND chunk is too small");
        const std::uint64_t left = std::min(size - kHeadBytes, source_.Left());
        samplesBytes_ = left - std::min<std::uint64_t>(left, offset);
        stored_.position = source_.Position() + offset;
    }

    /// The COMM chunk says how many frames there are, unless the program that wrote it did not
    /// know.
    void CountFrames() {
        stored_.numFrames = samplesBytes_.value_or(0) / stored_.FrameBytes();
        if (promisedFrames_ == 0 || promisedFrames_ == 0xFFFFFFFF) return;
        stored_.numFrames = std::min(stored_.numFrames, promisedFrames_);
        info_.missingFrames = promisedFrames_ - stored_.numFrames;
    }

    ByteSource& source_;
    AudioFileInfo& info_;
    bool isCompressed_ = false;
    bool commonFound_ = false;
    std::uint64_t promisedFrames_ = 0;
    std::optional<std::uint64_t> samplesBytes_;
    StoredSamples stored_;
};

}  // namespace

StoredSamples FindAiffSamples(ByteSource& source, AudioFileInfo& info) {
    return AiffChunks(source, info).Read();
}

}  // namespace tav
