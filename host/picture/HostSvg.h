// SPDX-License-Identifier: MIT
// Writes SVG: shapes in the order in which they are painted, pixels from the top left corner.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace Quilo::Host {

struct Spot {
    double x, y;
};

/// How a line or an outline looks.
struct Stroke {
    std::string_view colour;
    double width = 1;
    double opacity = 1;
    std::string_view dashes = {};  // as SVG names them: "6 4"
};

struct TextStyle {
    double size = 13;
    std::string_view colour = "#1f2933";
    std::string_view anchor = "start";  // or middle, end
    bool bold = false;
    bool halo = false;  // a white outline, legible on lines
    double turnDeg = 0;
};

class Svg {
public:
    /// Begin and End enclose a group, whose name makes the file easier to read.
    void Begin(std::string_view name);
    void End();

    void Line(Spot from, Spot to, const Stroke& stroke);
    void Polyline(std::span<const Spot> spots, const Stroke& stroke);
    void Area(std::span<const Spot> outline, std::string_view fill, double opacity = 1);
    void Circle(Spot centre, double radius, std::string_view fill, const Stroke& stroke = {"none"});
    void Box(Spot corner,
             double width,
             double height,
             std::string_view fill,
             double opacity = 1,
             double round = 0,
             const Stroke& stroke = {"none"});
    /// @param spot  vertically the middle of the letters; horizontally as the anchor says
    void Text(Spot spot, std::string_view text, const TextStyle& style = {});

    /// The whole document on a white ground.
    std::string Document(double width, double height, std::string_view title) const;

private:
    std::string body_;
};

/// Shortest text of a number rounded to `decimals`. LabelNumber writes a typographic minus sign,
/// and a power of ten if there are more than six digits before the point.
std::string NumberText(double number, int decimals = 2);
std::string LabelNumber(double number, int decimals = 2);
/// A distance as a label shows it, with a power of ten if it is large: "2.5 m", "1e30 m".
std::string MetresText(double metres);

}  // namespace Quilo::Host
