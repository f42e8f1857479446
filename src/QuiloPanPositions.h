// SPDX-License-Identifier: MIT
// Reads positions from the arguments of messages: the coordinate format, the values, and the texts
// that are posted when they do not fit.
#pragma once

#include "QuiloPanTexts.h"
#include "math/VelkDspCoordinates.h"
#include "max/VelkMaxAtoms.h"

#include <optional>

namespace Quilo {

class PanObject;

/// Whether a list begins with a whole number that a word or another number follows.
bool IsIndexed(VelkMax::Atoms atoms);

// ---- One position: source, speaker

/// The texts that a message about one position posts.
struct PositionTexts {
    const Text<int>* tooFew;  // shows the values needed; null: `unreadable`
    const Text<int>* tooMany;
    bool countsPositions;  // tooMany shows 1 position, not the values needed
    const Text<>* unreadable;
};
inline constexpr PositionTexts kSourceTexts{&kTooFewSourceValues, &kTooManySourceValues, false,
                                            &kUnreadableSource};
inline constexpr PositionTexts kSpeakerTexts{nullptr, &kTooManySpeakerValues, true,
                                             &kUnreadableSpeaker};

inline constexpr PositionTexts kListenerTexts{nullptr, &kTooManyListenerValues, true,
                                              &kUnreadableListener};

/// The coordinate format of a list and its values.
struct FormattedValues {
    tav::Coordinates::Format format = tav::Coordinates::Format::Ade;
    VelkMax::Atoms values;
};

/// Splits an optional leading format keyword off. A list that begins with a value is read as
/// azimuth, distance, elevation, with a warning; an unknown keyword is refused with an error.
std::optional<FormattedValues> ReadFormat(const PanObject& object, VelkMax::Atoms atoms);

/// Overwrites one position. Returns false, with nothing changed, when the values cannot be read.
bool ReadPosition(const PanObject& object,
                  const PositionTexts& texts,
                  const FormattedValues& formatted,
                  tav::CartesianVector& position);

// ---- Many positions

/// Reads one position for each element of `positions`. Returns false, with nothing changed, when
/// one of them cannot be read.
bool ReadLayout(const PanObject& object,
                const FormattedValues& formatted,
                tav::CartesianArray& positions);

/// The layout that the message `speakers` asks for; nothing, and said why, when it does not serve.
std::optional<tav::CartesianArray> ReadSpeakers(const PanObject& object, VelkMax::Atoms atoms);

/// The texts that an attribute with x, y, z of many positions posts.
struct TripletTexts {
    const Text<int>* tooFew;
    const Text<int>* tooMany;
    int valuesPerCount;  // 3: the texts show a number of positions; 1: of values
    const Text<>* unreadable;
    const Text<int>* unreadableNth;  // shows which; null: `unreadable`
};
inline constexpr TripletTexts kSourcesPositionTexts{&kTooFewSourceValues, &kTooManySourceValues, 1,
                                                    &kUnreadableSource, nullptr};
inline constexpr TripletTexts kSpeakersPositionTexts{&kTooFewSpeakers, &kTooManySpeakers, 3,
                                                     nullptr, &kUnreadableNthSpeaker};

/// Overwrites positions, from the first on, with the whole triplets of a list of x, y, z. A warning
/// tells how many values or positions are too few or too many. Returns false, with nothing changed,
/// for a list without a whole triplet or with a value that is no finite number.
bool ReadTriplets(const PanObject& object,
                  const TripletTexts& texts,
                  VelkMax::Atoms xyz,
                  tav::CartesianArray& positions);

}  // namespace Quilo
