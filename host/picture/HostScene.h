// SPDX-License-Identifier: MIT
// What a picture of a run needs: where everything was and how loud every outlet was, over time.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

/// How well the loudspeakers serve each direction; cells tile the sphere. Degrees, navigational.
struct CoverageMap {
    struct Cell {
        double azimuthDeg, widthDeg;  // the middle and the whole
        double bottomDeg, topDeg;     // elevation
        bool isSilent;
        double errorDeg;  // from where a source should be to where it seems to be
    };

    std::vector<Cell> cells;  // ring by ring, clockwise; none where there is nothing to tell
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
    std::vector<tav::CartesianVector> speakers;  // as they stood at the end; may be empty
    CoverageMap coverage;                        // likewise
    std::vector<Moment> path;                    // in order of time; the first is at 0
    /// Mean square of each outlet (row) in equal slots of time (columns) from 0 to `seconds`.
    std::vector<std::vector<double>> power;
};

/// Metres from the listener beyond which a picture only tells the direction and the distance:
/// twenty times the distance of the middle one of the loudspeakers (of the sources' places where
/// there are none), so that one thing far away does not make a dot of all others.
double ReachOf(const Scene& scene);

/// Metres from the listener, with 64 bits: squares of 1e30 do not fit in 32.
double DistanceOf(const tav::CartesianVector& position);

/// Fills a scene while audio runs. Its slots are so few that a picture can show them, whatever the
/// length of the run.
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
    /// Takes the samples that end up in the run, from `frame` on.
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
