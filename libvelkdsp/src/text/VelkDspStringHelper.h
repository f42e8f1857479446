// SPDX-License-Identifier: MIT
// Small conversions between values and text, independent of the locale.
#pragma once

#include "text/VelkDspString.h"

#include <ctime>
#include <optional>
#include <string_view>
#include <vector>

namespace tav {

/// `digits` significant digits, no trailing zeros, exponent where that is shorter ("0.5", "1e+20").
String NumberText(double value, int digits);
/// The shortest text that reads back to the same value.
String NumberText(float value);
/// The whole text as a decimal number; "inf" and "nan" read as well.
std::optional<double> ParseNumber(std::string_view text);

/// ASCII letters only, other bytes stay.
String LowerCase(std::string_view text);
String UpperCase(std::string_view text);
/// Without blanks, tabs and line ends at both ends.
std::string_view Trimmed(std::string_view text);
/// The pieces between separators, empty ones included; one piece if there is no separator.
std::vector<String> Split(std::string_view text, char separator);

/// "true" or "false".
std::string_view BooleanText(bool value);
/// "Sat 2026-11-21 04:05:06"
String DateText(const std::tm& date);
/// Begins with "http:", "https:" or "ftp:", in any case.
bool IsUrl(std::string_view text);
/// At most two decimals in Hz, kHz, MHz or GHz: "440 Hz", "44.1 kHz".
String FrequencyText(double hz);
/// At most two decimals: "12.5 ms".
String DurationText(double ms);

}  // namespace tav
