// SPDX-License-Identifier: MIT
#include "picture/HostSvg.h"

#include "text/VelkDspColours.h"
#include "text/VelkDspUtf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <optional>

namespace Quilo::Host {

namespace {

constexpr std::string_view kFonts = "Helvetica, Arial, 'DejaVu Sans', sans-serif";

/// The character, escaped where XML demands it.
std::string_view EscapedCharacter(std::string_view character) {
    if (character == "&") return "&amp;";
    if (character == "<") return "&lt;";
    if (character == ">") return "&gt;";
    if (character == "\"") return "&quot;";
    if (static_cast<unsigned char>(character.front()) < 0x20) return " ";
    // Valid Unicode that XML does not allow.
    if (character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF") return "\uFFFD";
    return character;
}

std::string Escaped(std::string_view text) {
    std::string escaped;
    while (!text.empty()) {
        const std::size_t length = tav::Utf8CharacterLength(text);
        escaped += length > 0 ? EscapedCharacter(text.substr(0, length)) : "\uFFFD";
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return escaped;
}

std::string Joined(std::initializer_list<std::string_view> parts) {
    std::string whole;
    for (const std::string_view part : parts) whole += part;
    return whole;
}

std::string Attribute(std::string_view name, std::string_view value) {
    return Joined({" ", name, "=\"", value, "\""});
}

std::string Attribute(std::string_view name, double value) {
    return Attribute(name, NumberText(value));
}

/// A colour by its name where it has one, so that the file is read more easily.
std::string Paint(std::string_view attribute, std::string_view text) {
    const std::optional<tav::Colour> colour = tav::FindColour(text);
    return colour ? Attribute(attribute, tav::ColourText(*colour)) : Attribute(attribute, text);
}

std::string Attributes(const Stroke& stroke) {
    std::string text = Paint("stroke", stroke.colour);
    if (stroke.colour == "none") return "";
    if (stroke.width != 1) text += Attribute("stroke-width", stroke.width);
    if (stroke.opacity != 1) text += Attribute("stroke-opacity", stroke.opacity);
    if (!stroke.dashes.empty()) text += Attribute("stroke-dasharray", stroke.dashes);
    return text;
}

std::string Points(std::span<const Spot> spots) {
    std::string text;
    for (const Spot& spot : spots)
        text +=
            Joined({text.empty() ? "" : " ", NumberText(spot.x, 1), ",", NumberText(spot.y, 1)});
    return text;
}

/// The number with a power of ten: "1.5e30".
std::string PowerText(double number, int digits) {
    char buffer[32];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), number,
                                   std::chars_format::scientific, digits - 1)
                         .ptr;
    std::string text(std::begin(buffer), end);
    const std::size_t e = text.find('e');
    const std::string power = text.substr(text[e + 1] == '+' ? e + 2 : e + 1);
    text.resize(text.find('.') < e ? text.find_last_not_of('0', e - 1) + 1 : e);
    if (text.ends_with('.')) text.pop_back();
    return text + "e" + power;
}

}  // namespace

std::string NumberText(double number, int decimals) {
    const double factor = std::pow(10.0, decimals);
    double rounded = std::round(number * factor) / factor;
    if (!std::isfinite(rounded) || rounded == 0) rounded = 0;  // no minus zero
    char text[400];
    const auto end =
        std::to_chars(std::begin(text), std::end(text), rounded, std::chars_format::fixed).ptr;
    return {std::begin(text), end};
}

std::string LabelNumber(double number, int decimals) {
    std::string text = std::abs(number) < 1e6 ? NumberText(number, decimals) : PowerText(number, 6);
    if (text.starts_with('-')) text.replace(0, 1, "\u2212");
    return text;
}

std::string MetresText(double metres) {
    if (!(metres < 1e5)) return PowerText(metres, 2) + " m";
    return LabelNumber(metres, metres < 1 ? 2 : metres < 100 ? 1 : 0) + " m";
}

void Svg::Begin(std::string_view name) { body_ += Joined({"<g", Attribute("id", name), ">\n"}); }

void Svg::End() { body_ += "</g>\n"; }

void Svg::Line(Spot from, Spot to, const Stroke& stroke) {
    body_ += Joined({"<line", Attribute("x1", from.x), Attribute("y1", from.y),
                     Attribute("x2", to.x), Attribute("y2", to.y), Attributes(stroke), "/>\n"});
}

void Svg::Polyline(std::span<const Spot> spots, const Stroke& stroke) {
    if (spots.size() < 2) return;
    body_ += Joined({"<polyline", Attribute("points", Points(spots)), Attribute("fill", "none"),
                     Attribute("stroke-linejoin", "round"), Attribute("stroke-linecap", "round"),
                     Attributes(stroke), "/>\n"});
}

void Svg::Area(std::span<const Spot> outline, std::string_view fill, double opacity) {
    body_ += Joined({"<polygon", Attribute("points", Points(outline)), Paint("fill", fill),
                     Attribute("fill-opacity", opacity), "/>\n"});
}

void Svg::Circle(Spot centre, double radius, std::string_view fill, const Stroke& stroke) {
    body_ += Joined({"<circle", Attribute("cx", centre.x), Attribute("cy", centre.y),
                     Attribute("r", radius), Paint("fill", fill), Attributes(stroke), "/>\n"});
}

void Svg::Box(Spot corner,
              double width,
              double height,
              std::string_view fill,
              double opacity,
              double round,
              const Stroke& stroke) {
    body_ += Joined({"<rect", Attribute("x", corner.x), Attribute("y", corner.y),
                     Attribute("width", width), Attribute("height", height), Paint("fill", fill)});
    if (opacity != 1) body_ += Attribute("fill-opacity", opacity);
    if (round != 0) body_ += Attribute("rx", round);
    body_ += Attributes(stroke) + "/>\n";
}

void Svg::Text(Spot spot, std::string_view text, const TextStyle& style) {
    const double baseline = spot.y + 0.35 * style.size;
    std::string place = Attribute("x", spot.x) + Attribute("y", baseline);
    if (style.turnDeg != 0)
        place += Attribute("transform", Joined({"rotate(", NumberText(style.turnDeg), " ",
                                                NumberText(spot.x), " ", NumberText(spot.y), ")"}));
    place += Attribute("font-size", style.size) + Attribute("text-anchor", style.anchor);
    if (style.bold) place += Attribute("font-weight", "bold");
    const std::string letters = Joined({">", Escaped(text), "</text>\n"});
    if (style.halo)
        body_ += Joined({"<text", place, Paint("fill", "white"), Attributes({"white", 4}),
                         Attribute("stroke-linejoin", "round"), letters});
    body_ += Joined({"<text", place, Paint("fill", style.colour), letters});
}

std::string Svg::Document(double width, double height, std::string_view title) const {
    const std::string box = Joined({"0 0 ", NumberText(width), " ", NumberText(height)});
    return Joined({"<svg xmlns=\"http://www.w3.org/2000/svg\"", Attribute("width", width),
                   Attribute("height", height), Attribute("viewBox", box),
                   Attribute("font-family", kFonts), ">\n<title>", Escaped(title), "</title>\n",
                   "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n", body_, "</svg>\n"});
}

}  // namespace Quilo::Host
