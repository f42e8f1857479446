// SPDX-License-Identifier: MIT
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <system_error>

namespace tav {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";
constexpr std::string_view kUrlSchemes[] = {"http:", "https:", "ftp:"};
constexpr std::string_view kDayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

template <class Convert>
String Mapped(std::string_view text, Convert convert) {
    String mapped(text);
    std::ranges::transform(mapped, mapped.begin(), convert);
    return mapped;
}

// Room for the longest fixed text of a double (309 digits) and its decimals.
template <class... Format>
String CharsOf(Format... format) {
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), format...).ptr;
    return {text.data(), end};
}

String TwoDecimals(double value) {
    String text = CharsOf(value, std::chars_format::fixed, 2);
    if (text.find('.') == String::npos) return text;  // inf, nan
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

String TwoDigits(int value) {
    const String digits = CharsOf(value);
    return digits.size() < 2 ? "0" + digits : digits;
}

}  // namespace

String NumberText(double value, int digits) {
    return CharsOf(value, std::chars_format::general, std::clamp(digits, 1, 64));
}

String NumberText(float value) { return CharsOf(value); }

std::optional<double> ParseNumber(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    double value = 0.0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

String LowerCase(std::string_view text) { return Mapped(text, Lower); }
String UpperCase(std::string_view text) { return Mapped(text, Upper); }

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::vector<String> Split(std::string_view text, char separator) {
    std::vector<String> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

std::string_view BooleanText(bool value) { return value ? "true" : "false"; }

String DateText(const std::tm& date) {
    const int day = std::clamp(date.tm_wday, 0, 6);
    return String(kDayNames[day]) + ' ' + CharsOf(date.tm_year + 1900) + '-' +
           TwoDigits(date.tm_mon + 1) + '-' + TwoDigits(date.tm_mday) + ' ' +
           TwoDigits(date.tm_hour) + ':' + TwoDigits(date.tm_min) + ':' + TwoDigits(date.tm_sec);
}

bool IsUrl(std::string_view text) {
    const String lower = LowerCase(text);
    return std::ranges::any_of(kUrlSchemes,
                               [&](std::string_view scheme) { return lower.starts_with(scheme); });
}

String FrequencyText(double hz) {
    struct Unit {
        double hz;
        std::string_view text;
    };
    constexpr Unit kUnits[] = {{1e9, " GHz"}, {1e6, " MHz"}, {1e3, " kHz"}, {1.0, " Hz"}};
    const Unit* unit =
        std::ranges::find_if(kUnits, [&](const Unit& u) { return std::abs(hz) >= u.hz; });
    if (unit == std::end(kUnits)) --unit;
    return TwoDecimals(hz / unit->hz) + String(unit->text);
}

String DurationText(double ms) { return TwoDecimals(ms) + " ms"; }

}  // namespace tav
