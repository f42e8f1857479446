// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscBundle.h"

#include "text/VelkDspException.h"

namespace tav {

namespace {

[[noreturn]] void ThrowAccessError() {
    throw Exception("Access error in OSC bundle element.",
                    SourceSite{"libvelkdsp/src/osc/VelkDspOscBundle", 0});
}

}  // namespace

const OSCMessage& OSCBundle::Element::Message() const {
    if (!IsMessage()) ThrowAccessError();
    return std::get<OSCMessage>(content_);
}

const OSCBundle& OSCBundle::Element::Bundle() const {
    if (IsMessage()) ThrowAccessError();
    return std::get<std::vector<OSCBundle>>(content_).front();
}

}  // namespace tav
