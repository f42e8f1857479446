// SPDX-License-Identifier: MIT
#include "HostCoverageProbe.h"

#include "HostConsole.h"
#include "HostObject.h"
#include "HostScratch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace Quilo::Host {

namespace {

constexpr double kGridDeg = 5;

struct TypeRow {
    std::string_view type;
    std::string_view whyNot;
};
// Types that are not listed distribute a source over loudspeakers.
constexpr TypeRow kOtherTypes[] = {
    {"bformat", "its outlets are an ambisonic field; the decoder behind it has the loudspeakers"},
    {"hoa2d", "its outlets are an ambisonic field; the decoder behind it has the loudspeakers"},
    {"hoa3d", "its outlets are an ambisonic field; the decoder behind it has the loudspeakers"},
    {"nfchoa2d", "its outlets are an ambisonic field; the decoder behind it has the loudspeakers"},
    {"nfchoa3d", "its outlets are an ambisonic field; the decoder behind it has the loudspeakers"},
    {"binaural", "its outlets are two ears"},
    {"xy", "its outlets are a pair of microphones, whatever loudspeakers play them"},
    {"ms", "its outlets are a pair of microphones, whatever loudspeakers play them"},
    {"ab", "its outlets are a pair of microphones, whatever loudspeakers play them"},
    {"subwoofers", "bass has no direction"},
    {"null", "it is silent"},
    {"", "there is no object any more"},
};

constexpr std::string_view kOwnSettings[] = {
    "numinputs",        "numoutputs",       "type", "subtype", "mute", "bypass", "automute",
    "sourcespositions", "interpolationtime"};

std::string WhyNot(const Object& object, const std::string& type) {
    const auto* row = std::ranges::find(kOtherTypes, type, &TypeRow::type);
    if (row != std::end(kOtherTypes)) return std::string(row->whyNot);
    if (object.AttributeText("subtype") == "diffuse") return "a diffuse source has no direction";
    return "";
}

std::vector<tav::CartesianVector> SpeakersOf(const Object& object) {
    const std::vector<float> xyz = object.AttributeNumbers("speakerspositions");
    std::vector<tav::CartesianVector> speakers;
    for (std::size_t k = 0; k + 2 < xyz.size(); k += 3)
        speakers.push_back({xyz[k], xyz[k + 1], xyz[k + 2]});
    return speakers;
}

double MeanDistance(std::span<const tav::CartesianVector> speakers) {
    double sum = 0;
    for (const auto& speaker : speakers) sum += DistanceOf(speaker);
    return sum > 0 ? sum / static_cast<double>(speakers.size()) : 1;
}

/// The rounded number without trailing zeros.
std::string Text(double number, int decimals) {
    if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
    if (std::abs(number) >= 1e6) decimals = 0;
    const double factor = std::pow(10, decimals);
    return AtomSpelling(Atom(std::round(number * factor) / factor + 0.0));
}

std::string DegreesText(double degrees) { return Text(degrees, 1); }

double Decibel(double power) { return 10 * std::log10(power); }

}  // namespace

bool IsHiddenSetting(std::span<const Atom> message) {
    if (message.front() == Atom(std::string("corners"))) return true;
    return message.size() == 4 && message[0] == Atom(std::string("source")) &&
           message[1] == Atom(std::int64_t{1}) && message[2] == Atom(std::string("numneighbors"));
}

MeasuredCoverage MeasureCoverage(const Object& object,
                                 std::span<const std::vector<Atom>> hiddenSettings) {
    MeasuredCoverage measured;
    measured.type = object.AttributeText("type");
    measured.whyNot = WhyNot(object, measured.type);
    if (!measured.whyNot.empty()) return measured;
    measured.speakers = SpeakersOf(object);
    measured.distanceMetres = MeanDistance(measured.speakers);
    const std::array<Atom, 5> box{std::string(object_classname(object.Get())->s_name),
                                  std::int64_t{1},
                                  static_cast<std::int64_t>(object.NumSignalOutlets()),
                                  measured.type, object.AttributeText("subtype")};
    Scratch twin(box);
    if (!twin.IsMade()) {
        measured.whyNot = "no second object could be made";
        return measured;
    }
    twin.CopyAttributes(object, kOwnSettings);
    twin.Send({"interpolationtime", std::int64_t{0}});
    twin.Send({"automute", std::int64_t{0}});
    for (const std::vector<Atom>& message : hiddenSettings) twin.Send(message);
    measured.grid = DirectionGrid(kGridDeg);
    std::vector<float> gains;
    for (const DirectionCell& cell : measured.grid) {
        const tav::CartesianVector unit = UnitVector(cell);
        const auto metres = [&](float part) {
            return Atom(static_cast<double>(part) * measured.distanceMetres);
        };
        twin.Send(
            {"source", std::int64_t{1}, "xyz", metres(unit.x), metres(unit.y), metres(unit.z)});
        const auto row = twin.Gains();
        gains.insert(gains.end(), row.begin(), row.end());
    }
    measured.coverage = SummariseCoverage(measured.grid, gains, measured.speakers);
    return measured;
}

void PrintCoverage(const MeasuredCoverage& measured, Console& console) {
    if (!measured.whyNot.empty())
        return console.Write("coverage", "none " + measured.type + ": " + measured.whyNot);
    const Coverage& coverage = measured.coverage;
    const auto where = [&](const Coverage::Extreme& extreme) {
        const DirectionCell& cell = measured.grid[extreme.cell];
        return " " + DegreesText(cell.azimuthDeg) + " " + DegreesText(cell.elevationDeg);
    };
    const auto line = [&](std::string_view key, const std::string& values) {
        console.Write("coverage", std::string(key) + " " + values);
    };
    line("type", measured.type);
    line("distance", Text(measured.distanceMetres, 3));
    line("silent", Text(coverage.silentShare, 4));
    line("silentupper", Text(coverage.silentUpperShare, 4));
    line("quietest", DegreesText(Decibel(coverage.quietest.value)) + where(coverage.quietest));
    line("meanangle", DegreesText(coverage.meanErrorDeg));
    line("worstangle", DegreesText(coverage.worstErrorDeg.value) + where(coverage.worstErrorDeg));
    line("meanhorizon", DegreesText(coverage.meanHorizonErrorDeg));
    line("worsthorizon",
         DegreesText(coverage.worstHorizonErrorDeg.value) + where(coverage.worstHorizonErrorDeg));
    line("flat", coverage.isFlat ? "1" : "0");
    line("symmetric", coverage.leftRight ? "1" : "0");
    if (coverage.leftRight)
        line("leftright", Text(coverage.leftRight->value, 4) + where(*coverage.leftRight) + " " +
                              std::to_string(coverage.leftRight->outlet + 1));
}

CoverageMap MapOf(const MeasuredCoverage& measured) {
    CoverageMap map;
    if (!measured.whyNot.empty()) return map;
    const Coverage& coverage = measured.coverage;
    for (std::size_t k = 0; k < measured.grid.size(); ++k) {
        const DirectionCell& cell = measured.grid[k];
        map.cells.push_back({cell.azimuthDeg, cell.widthDeg, cell.bottomDeg, cell.topDeg,
                             coverage.heard[k].IsSilent(), coverage.heard[k].errorDeg});
    }
    map.silentShare = coverage.silentShare;
    map.silentUpperShare = coverage.silentUpperShare;
    map.meanErrorDeg = coverage.meanErrorDeg;
    map.meanHorizonErrorDeg = coverage.meanHorizonErrorDeg;
    map.worstHorizonErrorDeg = coverage.worstHorizonErrorDeg.value;
    map.worstErrorDeg = coverage.worstErrorDeg.value;
    map.worstAzimuthDeg = measured.grid[coverage.worstErrorDeg.cell].azimuthDeg;
    map.worstElevationDeg = measured.grid[coverage.worstErrorDeg.cell].elevationDeg;
    map.isFlat = coverage.isFlat;
    if (coverage.leftRight) map.leftRight = coverage.leftRight->value;
    map.distanceMetres = measured.distanceMetres;
    return map;
}

}  // namespace Quilo::Host
