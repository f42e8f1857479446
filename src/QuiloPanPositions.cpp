// SPDX-License-Identifier: MIT
#include "QuiloPanPositions.h"

#include "QuiloPanObject.h"

#include <algorithm>
#include <array>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Warn;

using Format = tav::Coordinates::Format;

namespace {
constexpr std::size_t kMostValues = 8;  // more than any format has
}

bool IsIndexed(Atoms atoms) {
    return atoms.Size() >= 2 && atoms.IsLong(0) && (atoms.IsSymbol(1) || atoms.IsNumber(1));
}

std::optional<FormattedValues> ReadFormat(const PanObject& object, Atoms atoms) {
    if (!atoms.IsSymbol(0)) {
        Warn(object, VelkMax::kDefaultFormat);
        return FormattedValues{Format::Ade, atoms};
    }
    const auto format = tav::Coordinates::ParseFormat(atoms.Symbol(0)->s_name);
    if (!format) {
        Error(object, VelkMax::kUnknownFormat);
        return std::nullopt;
    }
    return FormattedValues{*format, atoms.From(1)};
}

bool ReadPosition(const PanObject& object,
                  const PositionTexts& texts,
                  const FormattedValues& formatted,
                  tav::CartesianVector& position) {
    const unsigned needed = tav::Coordinates::NumValues(formatted.format);
    const std::size_t given = formatted.values.Size();
    if (given < needed && texts.tooFew != nullptr) {
        Error(object, *texts.tooFew, static_cast<int>(needed));
        return false;
    }
    if (given > needed) {
        Warn(object, *texts.tooMany, texts.countsPositions ? 1 : static_cast<int>(needed));
    }
    std::array<float, kMostValues> memory{};
    const std::span<const float> values = formatted.values.First(needed).Numbers(memory);
    if (tav::Coordinates::Apply(position, formatted.format, values)) return true;
    Error(object, *texts.unreadable);
    return false;
}

bool ReadLayout(const PanObject& object,
                const FormattedValues& formatted,
                tav::CartesianArray& positions) {
    const std::size_t perPosition = tav::Coordinates::NumValues(formatted.format);
    const std::size_t needed = perPosition * positions.Size();
    const auto count = static_cast<int>(positions.Size());
    if (formatted.values.Size() < needed) {
        Error(object, kTooFewSpeakers, count);
        return false;
    }
    if (formatted.values.Size() > needed) Warn(object, kTooManySpeakers, count);
    tav::CartesianArray read = positions;
    for (std::size_t index = 0; index < read.Size(); ++index) {
        const Atoms values = formatted.values.From(index * perPosition).First(perPosition);
        std::array<float, kMostValues> memory{};
        if (tav::Coordinates::Apply(read[index], formatted.format, values.Numbers(memory))) {
            continue;
        }
        Error(object, kUnreadableNthSpeaker, static_cast<int>(index) + 1);
        return false;
    }
    positions = std::move(read);
    return true;
}

std::optional<tav::CartesianArray> ReadSpeakers(const PanObject& object, Atoms atoms) {
    if (!atoms.IsSymbol(0) && !atoms.IsNumber(0)) {
        VelkMax::Reject(object, kInvalidSpeakers, atoms);
        return std::nullopt;
    }
    const auto formatted = ReadFormat(object, atoms);
    tav::CartesianArray speakers = object.Speakers();
    if (!formatted || !ReadLayout(object, *formatted, speakers)) return std::nullopt;
    return speakers;
}

bool ReadTriplets(const PanObject& object,
                  const TripletTexts& texts,
                  Atoms xyz,
                  tav::CartesianArray& positions) {
    if (xyz.Empty()) return false;
    const std::size_t count = std::min(xyz.Size() / 3, positions.Size());
    if (count == 0) {
        Error(object, *texts.tooFew, static_cast<int>(3 * positions.Size()) / texts.valuesPerCount);
        return false;
    }
    if (xyz.Size() != 3 * count) {
        Warn(object, *texts.tooMany, static_cast<int>(3 * count) / texts.valuesPerCount);
    }
    tav::CartesianArray read = positions;
    for (std::size_t index = 0; index < count; ++index) {
        std::array<float, 3> memory{};
        const std::span<const float> values = xyz.From(3 * index).Numbers(memory);
        if (tav::Coordinates::Apply(read[index], Format::Xyz, values)) continue;
        if (texts.unreadable != nullptr) Error(object, *texts.unreadable);
        if (texts.unreadableNth != nullptr) {
            Error(object, *texts.unreadableNth, static_cast<int>(index) + 1);
        }
        return false;
    }
    positions = std::move(read);
    return true;
}

}  // namespace Quilo
