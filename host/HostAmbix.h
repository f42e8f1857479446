// SPDX-License-Identifier: MIT
// Ambisonic outlets in the convention of standard decoders (--ambix).
#pragma once

#include "math/VelkDspAmbix.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Object;

/// Whether the outlets are an ambisonic field of any order; otherwise they feed loudspeakers or
/// ears.
bool IsAmbisonic(const Object& object);

/// One channel for each outlet, unchanged.
std::vector<tav::AmbixChannel> PlainChannels(std::size_t numOutlets);

/// Converts the outlets of an object to an AmbiX field, according to its present normalisation.
class AmbixOutlets {
public:
    /// Throws: Fault (WrongInput) when the object's outlets are not ambisonic.
    explicit AmbixOutlets(const Object& object);

    /// Reads the object's normalisation again; once the object is freed, the last one is kept.
    /// Throws: Fault (WrongInput) for a normalisation that is not defined at the object's order.
    void Follow(const Object& object);

    /// The AmbiX channels; their number never changes.
    std::span<const tav::AmbixChannel> Channels() const { return channels_; }

private:
    std::string type_;
    unsigned dimension_ = 0;  // 0: B-format
    unsigned order_ = 0;
    std::optional<std::string> encoding_;  // the normalisation to which channels_ belongs
    std::vector<tav::AmbixChannel> channels_;
};

}  // namespace Quilo::Host
