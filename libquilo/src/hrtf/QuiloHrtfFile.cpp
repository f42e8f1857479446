// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfFile.h"

#include "SdifReader.h"
#include "filterdesign/VelkDspBiquadCells.h"
#include "math/VelkDspSpherical.h"
#include "text/VelkDspException.h"
#include "text/VelkDspLog.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace Quilo {

namespace {

constexpr double kLowestRate = 8000.0;  // Hz; those of the engine
constexpr double kHighestRate = 384000.0;
constexpr double kLargestCount = 1 << 24;  // of points, channels, numbers of a filter
constexpr std::uint32_t kValuesPerCellInFile = 4;
constexpr std::uint32_t kValuesPerCell = 6;

/// A point while its frame is read.
struct Entry {
    HrtfPoint point;
    bool hasPosition = false;
    bool hasFilters = false;
    std::vector<std::vector<double>> cells;  // of each channel, as in the file
};

std::ifstream Open(const std::string& path) {
    std::error_code fault;
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    if (!std::filesystem::exists(file, fault)) throw tav::Exception("couldnt find file " + path);
    if (!std::filesystem::is_regular_file(file, fault)) {
        throw tav::Exception("invalid file " + path);
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw tav::Exception("couldnt open file " + path);
    return stream;
}

bool FitsFloat(double value) noexcept {
    return std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max());
}

class HrtfFile {
public:
    explicit HrtfFile(const std::string& path) : path_(path) {}

    HrtfData Read(std::istream& stream) {
        Sdif::Reader reader = ReadGeneralHeader(stream);
        ReadHeader(reader);
        ReadFrames(reader);
        CollectPoints();
        set_.infos[HrtfInfo::kUrl] = path_;
        return std::move(set_);
    }

private:
    using Values = std::span<const double>;
    struct MatrixRow {
        std::string_view signature;
        void (HrtfFile::*store)(Entry& entry, const Sdif::MatrixHeader& header, Values values);
    };
    /// Null for a matrix that does not matter here.
    static const MatrixRow* FindMatrix(std::string_view signature);

    [[noreturn]] void Fail(const std::string& text) const { throw tav::Exception(text + path_); }
    [[noreturn]] void FailMatrix(const std::string& signature) const {
        Fail("exception reading " + signature + " matrix ");
    }

    Sdif::Reader ReadGeneralHeader(std::istream& stream) const {
        try {
            return Sdif::Reader(stream);
        } catch (const Sdif::Error&) {
            Fail("invalid file ");
        }
    }

    void ReadHeader(Sdif::Reader& reader) {
        try {
            for (auto& [key, value] : reader.ReadNameValues()) set_.infos[key] = value;
        } catch (const Sdif::Error&) {
            Fail("invalid header ");
        }
        const auto filterType = Hrtfs::FilterTypeKeywords().Parse(Info(HrtfInfo::kFiltersType));
        if (!filterType || *filterType == Hrtfs::FilterType::Unknown) Fail("invalid header ");
        set_.filterType = *filterType;
        set_.numChannels = CountInfo(HrtfInfo::kNumChannels);
        set_.numPoints = CountInfo(HrtfInfo::kNumPoints);
        set_.samplingRate =
            static_cast<float>(NumberInfo(HrtfInfo::kSamplingRate, kLowestRate, kHighestRate));
        fileLength_ = set_.filtersLength = CountInfo(HrtfInfo::kFiltersLength);
        if (set_.filterType == Hrtfs::FilterType::BiquadCells) {
            const std::uint32_t numCells = (fileLength_ - 1) / kValuesPerCellInFile;
            if (numCells == 0) Fail("invalid header ");
            set_.filtersLength = kValuesPerCell * numCells;
        }
        // A set that does not say what it is for, or says nothing known, is one for two ears.
        set_.architecture = Hrtfs::ArchitectureKeywords()
                                .Parse(Info(HrtfInfo::kDataType))
                                .value_or(Hrtfs::Architecture::Unspecified);
        if (set_.architecture == Hrtfs::Architecture::Unspecified) {
            set_.architecture = Hrtfs::Architecture::Binaural;
        }
    }

    std::string Info(const char* key) const {
        const auto found = set_.infos.find(key);
        return found == set_.infos.end() ? std::string() : found->second;
    }

    double NumberInfo(const char* key, double lowest, double highest) const {
        const std::optional<double> number = tav::ParseNumber(Info(key));
        if (!number || !(*number >= lowest && *number <= highest)) Fail("invalid header ");
        return *number;
    }

    std::uint32_t CountInfo(const char* key) const {
        const double number = NumberInfo(key, 1.0, kLargestCount);
        if (number != std::floor(number)) Fail("invalid header ");
        return static_cast<std::uint32_t>(number);
    }

    void ReadFrames(Sdif::Reader& reader) {
        std::uint64_t numFrames = 0;
        bool warned = false;
        try {
            while (const auto frame = reader.NextFrame()) {
                if (frame->signature == "HRTF") {
                    ++numFrames;
                    ReadPoint(reader, frame->stream);
                } else if (!std::exchange(warned, true)) {
                    tav::Log("unexpected frames " + path_);
                }
            }
        } catch (const Sdif::Error&) {
            Fail("error reading file ");
        }
        if (numFrames != set_.numPoints) Fail("invalid number of HRTF frames ? ");
    }

    void ReadPoint(Sdif::Reader& reader, std::int32_t stream) {
        const auto index = static_cast<std::uint32_t>(stream) - 1u;
        if (index >= set_.numPoints) Fail("too many HRTF frames ? ");
        Entry& entry = entries_[index];
        while (const auto header = reader.NextMatrix()) {
            const MatrixRow* const row = FindMatrix(header->signature);
            if (!row) continue;
            std::vector<double> values;
            CheckFilterType(header->signature);
            try {
                values = reader.ReadMatrix();
            } catch (const Sdif::Error&) {
                if (row->store == &HrtfFile::StorePosition) FailMatrix(header->signature);
                throw;
            }
            if (!std::ranges::all_of(values, FitsFloat)) FailMatrix(header->signature);
            (this->*row->store)(entry, *header, values);
        }
    }

    void CheckFilterType(const std::string& signature) const {
        const bool isFir = set_.filterType == Hrtfs::FilterType::Fir;
        if (isFir && signature == "XITD") Fail("XITD matrix with FIR filters ? ");
        if (isFir && signature == "XIIR") Fail("XIIR matrix with FIR filters ? ");
        if (!isFir && signature == "XFIR") Fail("unexpected XFIR matrix ? ");
    }

    static tav::CartesianVector Vector(Values values) {
        return {static_cast<float>(values[0]), static_cast<float>(values[1]),
                static_cast<float>(values[2])};
    }

    void StorePosition(Entry& entry, const Sdif::MatrixHeader& header, Values values) {
        if (values.size() != 3) FailMatrix(header.signature);
        const tav::CartesianVector v = Vector(values);
        entry.point.position =
            header.signature == "XCAR" ? v : tav::FromNavigational(v.x, v.y, v.z);
        // Searches compare squares of distances in 32 bits.
        if (!std::isfinite(tav::Distance(entry.point.position))) FailMatrix(header.signature);
        entry.hasPosition = true;
    }

    void StoreDelay(Entry& entry, const Sdif::MatrixHeader& header, Values values) {
        if (values.size() != 1) FailMatrix(header.signature);
        entry.point.delay = static_cast<float>(values[0]);
    }

    void CheckSize(const Sdif::MatrixHeader& header) const {
        if (header.rows != set_.numChannels || header.columns != fileLength_) {
            FailMatrix(header.signature);
        }
    }

    void StoreCells(Entry& entry, const Sdif::MatrixHeader& header, Values values) {
        CheckSize(header);
        if (set_.filterType != Hrtfs::FilterType::BiquadCells) FailMatrix(header.signature);
        const std::size_t used = 1 + set_.filtersLength / kValuesPerCell * kValuesPerCellInFile;
        entry.cells.clear();
        for (; !values.empty(); values = values.subspan(fileLength_)) {
            entry.cells.emplace_back(values.begin(),
                                     values.begin() + static_cast<std::ptrdiff_t>(used));
        }
        entry.hasFilters = true;
    }

    void StoreTaps(Entry& entry, const Sdif::MatrixHeader& header, Values values) {
        CheckSize(header);
        entry.point.filters.Resize(set_.numChannels, set_.filtersLength);
        std::ranges::transform(values, entry.point.filters.Data(),
                               [](double value) { return static_cast<float>(value); });
        entry.hasFilters = true;
    }

    void CollectPoints() {
        const bool needsFilters = set_.filterType != Hrtfs::FilterType::ShCoeff;
        for (const auto& [index, entry] : entries_) {
            if (!entry.hasPosition || (needsFilters && !entry.hasFilters)) {
                Fail("incomplete HRTF frames ? ");
            }
        }
        if (entries_.size() != set_.numPoints) Fail("incomplete HRTF frames ? ");
        if (set_.filterType == Hrtfs::FilterType::BiquadCells) ConvertCells();
        for (auto& [index, entry] : entries_) {
            entry.point.index = index;
            set_.points.push_back(std::move(entry.point));
        }
    }

    /// The whole set at once: only all cells together tell in which order their values stand.
    void ConvertCells() {
        std::vector<std::vector<double>> responses;
        for (auto& [index, entry] : entries_)
            std::ranges::move(entry.cells, std::back_inserter(responses));
        std::vector<tav::BiquadCells> set;
        try {
            set = tav::CellSetFromFile(responses);
        } catch (const tav::Exception& fault) {
            Fail(fault.Message() + " : ");
        }
        std::size_t next = 0;
        for (auto& [index, entry] : entries_) {
            entry.point.filters.Resize(set_.numChannels, set_.filtersLength);
            for (std::uint32_t channel = 0; channel < set_.numChannels; ++channel) {
                const std::vector<double> values = tav::CellsToMemory(set[next++]);
                // The product of gain and numerator may be out of reach where both are not.
                if (!std::ranges::all_of(values, FitsFloat)) FailMatrix("XIIR");
                std::ranges::transform(values, entry.point.filters.Row(channel).begin(),
                                       [](double value) { return static_cast<float>(value); });
            }
        }
    }

    const std::string& path_;
    HrtfData set_;
    std::uint32_t fileLength_ = 0;  // numbers per channel in XIIR and XFIR
    std::map<std::uint32_t, Entry> entries_;
};

const HrtfFile::MatrixRow* HrtfFile::FindMatrix(std::string_view signature) {
    static constexpr MatrixRow kRows[] = {
        {"XCAR", &HrtfFile::StorePosition}, {"XAED", &HrtfFile::StorePosition},
        {"XITD", &HrtfFile::StoreDelay},    {"XIIR", &HrtfFile::StoreCells},
        {"XFIR", &HrtfFile::StoreTaps},
    };
    const auto* const row = std::ranges::find(kRows, signature, &MatrixRow::signature);
    return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

std::string_view FileExtension(std::string_view path) noexcept {
    const std::string_view name = path.substr(path.find_last_of("/\\:") + 1);
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view{} : name.substr(dot + 1);
}

HrtfData ReadHrtfStream(std::istream& stream, const std::string& path) {
    try {
        return HrtfFile(path).Read(stream);
    } catch (const tav::Exception&) {
        throw;
    } catch (...) {
        throw tav::Exception("unknown exception while loading file " + path);
    }
}

HrtfData ReadHrtfFile(const std::string& path) {
    std::ifstream stream = Open(path);
    return ReadHrtfStream(stream, path);
}

}  // namespace Quilo
