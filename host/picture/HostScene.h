// SPDX-License-Identifier: MIT
// The data of a picture: all positions and the level of each outlet over time.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

/// How well the loudspeakers render each direction; cells tile the sphere. Degrees, navigational.
struct CoverageMap {
    struct Cell {
        double azimuthDeg, widthDeg;  // the middle and the whole
        double bottomDeg, topDeg;     // elevation
        bool isSilent;
        double errorDeg;  // angle between a source and where it is heard
    };

    std::vector<Cell> cells;  // ring by ring, clockwise; empty if there is no coverage
    double distanceMetres = 1;
    double silentShare = 0, silentUpperShare = 0;  // 0 to 1
    double meanErrorDeg = 0, worstErrorDeg = 0;
    double meanHorizonErrorDeg = 0, worstHorizonErrorDeg = 0;
    double worstAzimuthDeg = 0, worstElevationDeg = 0;
    bool isFlat = false;
    std::optional<double> leftRight;  // largest difference of gains on a symmetric layout
};

struct Scene {
    struct Moment {
        double seconds;
        std::vector<tav::CartesianVector> sources;
    };

    std::string title;  // the box text
    double seconds = 0;
    double rateHz = 48000;
    unsigned vector = 64;  // frames
    std::size_t numInlets = 0;
    std::vector<tav::CartesianVector> speakers;  // their last positions; may be empty
    CoverageMap coverage;                        // likewise
    std::vector<Moment> path;                    // in order of time; the first is at 0
    /// Mean square of each outlet (row) in equal slots of time (columns) from 0 to `seconds`.
    std::vector<std::vector<double>> power;
};

/// Metres from the listener beyond which a picture shows only direction and distance, so that one
/// remote source does not shrink all else to a dot: twenty times the median distance of the
/// loudspeakers, or of the sources' positions if there are no loudspeakers.
double ReachOf(const Scene& scene);

/// Metres from the listener, with 64 bits: squares of 1e30 do not fit in 32.
double DistanceOf(const tav::CartesianVector& position);

/// Fills a scene while audio runs. The number of time slots is limited to what a picture can show.
class SceneRecorder {
public:
    /// @param numFrames  of the whole run
    SceneRecorder(Scene scene, std::size_t numOutlets, std::uint64_t numFrames);

    /// Whether positions of this frame are wanted.
    bool WantsPositions(std::uint64_t frame) const;
    /// @param sources, speakers  x y z of each; other lengths are cut to whole triplets
    void AddPositions(std::uint64_t frame,
                      std::span<const float> sources,
                      std::span<const float> speakers);
    /// Adds samples of one outlet, the first of them at `frame`, all of them within the run.
    void AddSamples(std::size_t outlet, std::uint64_t frame, std::span<const double> samples);

    Scene Finish();

private:
    std::uint64_t SlotStart(std::size_t slot) const;
    std::size_t SlotOf(std::uint64_t frame) const;

    Scene scene_;
    std::uint64_t numFrames_;
    std::size_t numSlots_;
    std::uint64_t nextPositions_ = 0;
};

}  // namespace Quilo::Host
