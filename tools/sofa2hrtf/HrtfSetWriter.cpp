// SPDX-License-Identifier: MIT
#include "HrtfSetWriter.h"

#include "SdifWriter.h"
#include "files/VelkDspFileReplacement.h"
#include "hrtf/QuiloHrtfData.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <sstream>

namespace SofaTool {

namespace {

/// Text without what separates names and values in SDIF.
std::string Plain(std::string text) {
    for (char& c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || c == ';' || c == '{' || c == '}' || c == ',' || c == '"') c = ' ';
    }
    return text;
}

std::string RateText(double hz) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", hz);
    return text;
}

std::string Today() {
    const std::time_t now = std::time(nullptr);
    char text[16];
    std::tm day{};
#ifdef _WIN32
    gmtime_s(&day, &now);
#else
    gmtime_r(&now, &day);
#endif
    std::strftime(text, sizeof text, "%Y-%m-%d", &day);
    return text;
}

Sdif::NameValues InfosOf(const ConvertedSet& set,
                         const std::map<std::string, std::string>& attributes) {
    using namespace Quilo::HrtfInfo;
    const auto from = [&](const char* name) {
        const auto found = attributes.find(name);
        return found == attributes.end() ? std::string() : Plain(found->second);
    };
    const auto length = set.points.front().filters[0].size();
    return {{kAuthor, from("AuthorContact")},
            {kCopyright, from("Copyright")},
            {kDataType, "Binaural"},
            {kDateCreated, from("DateCreated")},
            {kFiltersLength, std::to_string(length)},
            {kFiltersType, set.numCells > 0 ? "BiquadCells" : "FIR"},
            {kGenerated, "sofa2hrtf " + Today()},
            {kInterpolationSet, ""},
            {kLicense, from("License")},
            {kListenerShortName, from("ListenerShortName")},
            {kMeasurementSet, from("DatabaseName")},
            {kNumChannels, "2"},
            {kNumPoints, std::to_string(set.points.size())},
            {kOrganization, from("Organization")},
            {kOwner, ""},
            {kSamplingRate, RateText(set.rateHz)},
            {kSpatialInterpolation, ""},
            {kSubject, ""},
            {kSymmetrization, ""}};
}

}  // namespace

std::string HrtfBytes(const ConvertedSet& set,
                      const std::map<std::string, std::string>& attributes) {
    using Sdif::ElementType;
    std::ostringstream stream;
    Sdif::Writer writer(stream);
    writer.WriteNameValues(InfosOf(set, attributes));
    std::int32_t number = 0;
    for (const ConvertedPoint& point : set.points) {
        const auto d = [](float v) { return static_cast<double>(v); };
        std::vector<Sdif::Matrix> matrices{
            {"XCAR",
             ElementType::Float32,
             1,
             3,
             {d(point.position.x), d(point.position.y), d(point.position.z)}}};
        const auto columns = static_cast<std::uint32_t>(point.filters[0].size());
        Sdif::Matrix filters{
            set.numCells > 0 ? "XIIR" : "XFIR", ElementType::Float32, 2, columns, {}};
        for (const auto& ear : point.filters) {
            filters.values.insert(filters.values.end(), ear.begin(), ear.end());
        }
        if (set.numCells > 0) {
            matrices.push_back({"XITD", ElementType::Float32, 1, 1, {point.delayMs}});
            filters.type = ElementType::Float64;  // poles near the circle need their digits
        }
        matrices.push_back(std::move(filters));
        writer.WriteFrame("HRTF", 0.0, ++number, matrices);
    }
    return stream.str();
}

void WriteWhole(const std::filesystem::path& file, const std::string& bytes) {
    if (!tav::ReplaceFile(file, bytes)) throw tav::Exception("cannot be written");
}

}  // namespace SofaTool
