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

/// Whether the outlets are an ambisonic field, of whatever order; else they feed loudspeakers or
/// ears.
bool IsAmbisonic(const Object& object);

/// Every outlet as it is.
std::vector<tav::AmbixChannel> PlainChannels(std::size_t numOutlets);

/// What makes an AmbiX field of the outlets of an object, under the normalisation in force.
class AmbixOutlets {
public:
    /// Throws: Fault (WrongInput) for an object whose outlets are no ambisonic field.
    explicit AmbixOutlets(const Object& object);

    /// Asks the object for its normalisation again; what it was last once the object is free.
    /// Throws: Fault (WrongInput) for a normalisation that lacks channels of the object's order.
    void Follow(const Object& object);

    /// As many at any time.
    std::span<const tav::AmbixChannel> Channels() const { return channels_; }

private:
    std::string type_;
    unsigned dimension_ = 0;  // 0: B-format
    unsigned order_ = 0;
    std::optional<std::string> encoding_;  // for which the channels hold
    std::vector<tav::AmbixChannel> channels_;
};

}  // namespace Quilo::Host
