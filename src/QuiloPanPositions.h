// SPDX-License-Identifier: MIT
// Reading positions from the arguments of messages: the coordinate format, the values, and what is
// said when they do not fit.
#pragma once

#include "QuiloPanTexts.h"
#include "math/VelkDspCoordinates.h"
#include "max/VelkMaxAtoms.h"

#include <optional>

namespace Quilo {

class PanObject;

/// Whether a message begins with an index and goes on with something that a handler can read.
bool IsIndexed(VelkMax::Atoms atoms);

// ---- One position: source, speaker

/// What a message about one position says.
struct PositionTexts {
    const Text<int>* tooFew;  // number of values the format has; null: the list is unreadable then
    const Text<int>* tooMany;
    bool countsPositions;  // tooMany counts the one position, not its values
    const Text<>* unreadable;
};
inline constexpr PositionTexts kSourceTexts{&kTooFewSourceValues, &kTooManySourceValues, false,
                                            &kUnreadableSource};
inline constexpr PositionTexts kSpeakerTexts{nullptr, &kTooManySpeakerValues, true,
                                             &kUnreadableSpeaker};

inline constexpr PositionTexts kListenerTexts{nullptr, &kTooManyListenerValues, true,
                                              &kUnreadableListener};

/// A format keyword, or the default, and the values behind it.
struct FormattedValues {
    tav::Coordinates::Format format = tav::Coordinates::Format::Ade;
    VelkMax::Atoms values;
};

/// Splits an optional leading format keyword off. A list that begins with a value is read as
/// azimuth, distance, elevation, with a warning; an unknown keyword is refused with an error.
std::optional<FormattedValues> ReadFormat(const PanObject& object, VelkMax::Atoms atoms);

/// Sets or changes one position; false, and nothing changed, when the values do not serve.
bool ReadPosition(const PanObject& object,
                  const PositionTexts& texts,
                  const FormattedValues& formatted,
                  tav::CartesianVector& position);

// ---- Many positions

/// Reads one position for each element of `positions`; false, and nothing changed, when one of them
/// cannot be read.
bool ReadLayout(const PanObject& object,
                const FormattedValues& formatted,
                tav::CartesianArray& positions);

/// What an attribute that holds x, y, z of many positions says.
struct TripletTexts {
    const Text<int>* tooFew;
    const Text<int>* tooMany;
    int valuesPerCount;  // what the numbers in both count: 3 positions, 1 coordinates
    const Text<>* unreadable;
    const Text<int>* unreadableNth;  // where it is not null: says which
};
inline constexpr TripletTexts kSourcesPositionTexts{&kTooFewSourceValues, &kTooManySourceValues, 1,
                                                    &kUnreadableSource, nullptr};
inline constexpr TripletTexts kSpeakersPositionTexts{&kTooFewSpeakers, &kTooManySpeakers, 3,
                                                     nullptr, &kUnreadableNthSpeaker};

/// Overwrites positions from the first on by the whole triplets of a list of x, y, z. What is left
/// over is named in a warning. False, and nothing changed, for an empty list, one without a
/// triplet and one with something that is no finite number.
bool ReadTriplets(const PanObject& object,
                  const TripletTexts& texts,
                  VelkMax::Atoms xyz,
                  tav::CartesianArray& positions);

}  // namespace Quilo
