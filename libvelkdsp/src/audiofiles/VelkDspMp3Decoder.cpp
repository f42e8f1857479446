// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3Decoder.h"

#include "audiofiles/VelkDspMp3Layer2.h"

#include <algorithm>

namespace tav {

bool Mp3Decoder::Decode(const Mp3Header& header, Bytes frame, float* const* channels) noexcept {
    return header.layer == 3 ? DecodeLayer3(header, frame, channels)
                             : DecodeLayer2(header, frame, channels);
}

bool Mp3Decoder::DecodeLayer2(const Mp3Header& header,
                              Bytes frame,
                              float* const* channels) noexcept {
    Mp3BitReader reader(frame, 8 * (Mp3Header::kNumBytes + (header.hasCheckSum ? 2 : 0)));
    Mp3Layer2Frame content(header, reader);
    bool isWhole = true;
    for (std::size_t half = 0; half < 2; ++half) {
        isWhole &= content.ReadSlots(reader, 8 * frame.size(), work_[0].slots, work_[1].slots);
        for (std::size_t channel = 0; channel < header.NumChannels(); ++channel) {
            channels_[channel].synthesis.Process(work_[channel].slots,
                                                 channels[channel] + half * kMp3Lines);
        }
    }
    return isWhole;
}

/// Appends the frame's data to the past that it refers to. False where that past is not there.
bool Mp3Decoder::KeepMainData(std::size_t begin, Bytes data) noexcept {
    const bool isThere = begin <= reservoirBytes_;
    const std::size_t kept = std::min(reservoirBytes_, kMostPast);
    std::copy_n(reservoir_.begin() + static_cast<std::ptrdiff_t>(reservoirBytes_ - kept), kept,
                reservoir_.begin());
    const std::size_t added = std::min(data.size(), kMostFrame);
    std::copy_n(data.begin(), added, reservoir_.begin() + static_cast<std::ptrdiff_t>(kept));
    reservoirBytes_ = kept + added;
    mainBits_ = isThere ? 8 * (kept - begin) : 0;
    return isThere;
}

bool Mp3Decoder::ReadSpectrum(const Mp3Header& header,
                              const Mp3SideInfo& side,
                              std::size_t granule,
                              std::size_t channel,
                              Mp3Granule& info) noexcept {
    Work& work = work_[channel];
    const std::size_t end = mainBits_ + info.numBits;
    Mp3BitReader reader(Bytes(reservoir_).first(reservoirBytes_), mainBits_);
    mainBits_ = end;
    const bool isThere = end <= 8 * reservoirBytes_;
    std::size_t numLines = 0;
    if (isThere) {
        Mp3ScaleFactors& factors = channels_[channel].factors;
        ReadMp3ScaleFactors(reader, header, side, granule, channel, info, factors);
        numLines = DecodeMp3Lines(reader, end, info.regions, work.values);
    }
    RequantiseMp3(work.values, numLines, info, Mp3Bands(header.rateIndex, info.Blocks()),
                  channels_[channel].factors, work.spectrum);
    return isThere;
}

void Mp3Decoder::Synthesise(const Mp3BandList& bands,
                            const Mp3Granule& info,
                            std::size_t channel,
                            float* samples) noexcept {
    Work& work = work_[channel];
    const Mp3Spectrum& spectrum = work.spectrum;
    work.lines.fill(0);
    for (std::size_t line = 0; line < spectrum.numLines; ++line) {
        work.lines[bands.places[line]] = spectrum.lines[line];
    }
    const bool isLong = info.Blocks() == Mp3Blocks::Long;
    const std::size_t used = (spectrum.numLines + kMp3Slots - 1) / kMp3Slots;
    const std::size_t numBoundaries = isLong         ? std::min<std::size_t>(used, 31)
                                      : info.isMixed ? 1
                                                     : 0;
    ReduceMp3Aliases(work.lines, numBoundaries);
    // Windows of a short block stand apart in the stream, so that the last line may lie anywhere.
    const std::size_t numSubbands = isLong ? numBoundaries + 1 : kMp3Subbands;
    channels_[channel].hybrid.Process(work.lines, numSubbands, info.blockType, info.isMixed,
                                      work.slots);
    channels_[channel].synthesis.Process(work.slots, samples);
}

bool Mp3Decoder::DecodeLayer3(const Mp3Header& header,
                              Bytes frame,
                              float* const* channels) noexcept {
    const std::size_t sideStart = Mp3Header::kNumBytes + (header.hasCheckSum ? 2 : 0);
    const std::size_t sideEnd = sideStart + header.NumSideBytes();
    std::optional<Mp3SideInfo> side;
    bool isWhole = false;
    if (frame.size() >= sideEnd) {
        Mp3BitReader reader(frame.first(sideEnd), 8 * sideStart);
        side = ReadMp3SideInfo(reader, header);
        const std::size_t begin = side ? side->mainDataBegin : 0;
        isWhole = KeepMainData(begin, frame.subspan(sideEnd)) && side;
    }
    if (!isWhole) side.emplace();  // granules without bits: silence
    for (std::size_t granule = 0; granule < header.NumGranules(); ++granule) {
        std::array<Mp3Granule, 2> infos = side->granules[granule];
        for (std::size_t channel = 0; channel < header.NumChannels(); ++channel) {
            isWhole &= ReadSpectrum(header, *side, granule, channel, infos[channel]);
        }
        if (header.modeExtension != 0) {
            DecodeMp3Stereo(header, infos[1], Mp3Bands(header.rateIndex, infos[1].Blocks()),
                            channels_[1].factors, work_[0].spectrum, work_[1].spectrum);
        }
        for (std::size_t channel = 0; channel < header.NumChannels(); ++channel) {
            Synthesise(Mp3Bands(header.rateIndex, infos[channel].Blocks()), infos[channel], channel,
                       channels[channel] + granule * kMp3Lines);
        }
    }
    return isWhole;
}

}  // namespace tav
