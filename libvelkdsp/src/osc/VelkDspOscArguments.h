// SPDX-License-Identifier: MIT
// Whether the arguments of a message are those that its address takes, and what they say.
#pragma once

#include "osc/VelkDspOscReader.h"

#include <span>
#include <string_view>

namespace tav {

/// Whether one argument fits one character of a format.
bool OscValueFits(const OscValue& value, char format) noexcept TAV_NONBLOCKING;

/// Whether arguments fit a format, one character each:
///     b  T, F, i or h      f  f          i, l  i or h     s  s
///     d  d                 n  f i h d    u     i or h, 0 or more
/// Any other character fits nothing.
/// @param isExact  no more arguments than characters, either
bool OscArgumentsFit(const OscMessageView& message,
                     std::string_view format,
                     bool isExact) noexcept TAV_NONBLOCKING;

/// T is true; so are i and h when they are exactly 1; all else is false.
bool OscFlag(const OscValue& value) noexcept TAV_NONBLOCKING;

/// Reads the arguments that a format asks for, in which flags become 0 and 1; more arguments than
/// characters are passed over.
/// @param format  of numbers and flags: b, d, f, i, l, n, u
/// @param values  as many as the format has characters; undefined where it does not fit
/// @return whether the arguments fit the format
bool ReadOscNumbers(const OscMessageView& message,
                    std::string_view format,
                    std::span<float> values) noexcept TAV_NONBLOCKING;

}  // namespace tav
