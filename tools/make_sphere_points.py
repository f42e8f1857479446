#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Makes the tables of points on the sphere: libvelkdsp/src/math/VelkDspSphereTables.cpp.

    tools/make_sphere_points.py            writes the file and prints the figures of every set
    tools/make_sphere_points.py --check    only measures what the file has

The sets come in pairs, left and right of the median plane. Each begins where charges that repel each other come
to rest, and is then moved until it is a spherical design of as high a degree as that many points allow: the mean of
any polynomial up to that degree over the points is its mean over the sphere (P. Delsarte, J. M. Goethals,
J. J. Seidel, "Spherical codes and designs", Geometriae Dedicata 6, 1977). Needs Debian's numpy.
"""
import math
import re
import sys
from pathlib import Path

import numpy as np

TARGET = Path(__file__).resolve().parent.parent / "libvelkdsp/src/math/VelkDspSphereTables.cpp"
COUNTS = (16, 24, 28, 30, 32, 36, 40, 44, 48, 50, 54, 60, 64, 72, 80, 84, 96, 100, 108, 120, 128, 144,
          160, 180, 200, 240)
GOLDEN = (1 + math.sqrt(5)) / 2


def platonic():
    """Name and points of each solid, mirrored in x."""
    signs = [(a, b) for a in (-1, 1) for b in (-1, 1)]
    cube = [(a, b, c) for c in (-1, 1) for a, b in signs]
    tetra = math.sqrt(1 / 2)
    return (
        ("tetrahedron", [(a, 0, -tetra) for a in (-1, 1)] + [(0, a, tetra) for a in (-1, 1)]),
        ("octahedron", [(0, 0, -1), (0, 1, 0), (-1, 0, 0), (1, 0, 0), (0, -1, 0), (0, 0, 1)]),
        ("icosahedron", [p for a, b in signs for p in ((0, a, b * GOLDEN), (a, b * GOLDEN, 0), (b * GOLDEN, 0, a))]),
        ("dodecahedron", cube + [p for a, b in signs for p in
                                 ((0, a / GOLDEN, b * GOLDEN), (a / GOLDEN, b * GOLDEN, 0), (b * GOLDEN, 0, a / GOLDEN))]),
    )


def unit(points):
    points = np.asarray(points, float)
    return points / np.sqrt((points ** 2).sum(1))[:, None]


def both_sides(half):
    return np.concatenate((half, half * (-1, 1, 1)))


def at_rest(count):
    """Half of `count` charges, the other half being their mirror images, where they hardly move any more."""
    k = np.arange(count // 2)
    z = 1 - (2 * k + 1) / (count // 2)
    turn = (k * (GOLDEN - 1)) % 1 * math.pi  # within the right half
    ring = np.sqrt(1 - z * z)
    half = np.stack((ring * np.sin(turn), ring * np.cos(turn), z), 1)
    step = 0.1 / count
    for _ in range(3000):
        away = half[:, None, :] - both_sides(half)[None, :, :]
        distance = np.sqrt((away ** 2).sum(2))
        distance[distance == 0] = np.inf
        force = (away / distance[..., None] ** 3).sum(1)
        force -= (force * half).sum(1)[:, None] * half
        half = unit(half + step * force)
    return half


def harmonics(points, degree):
    """Orthonormal harmonics of degrees 1 to `degree`, those that are equal on both sides of the median plane; and
    their derivatives by the angles of the points. The plane's azimuth, from y = 0, makes these the cosines."""
    x, y, z = points.T
    s = np.sqrt(x * x + y * y)
    turn = np.arctan2(x, y)
    legendre = {(0, 0): np.full_like(z, math.sqrt(1 / (4 * math.pi)))}
    for m in range(1, degree + 2):
        legendre[m, m] = legendre[m - 1, m - 1] * s * math.sqrt((2 * m + 1) / (2 * m))
    for m in range(degree + 1):
        legendre[m + 1, m] = legendre[m, m] * z * math.sqrt(2 * m + 3)
        for n in range(m + 2, degree + 2):
            a = math.sqrt((4 * n * n - 1) / (n * n - m * m))
            b = math.sqrt(((n - 1) ** 2 - m * m) / (4 * (n - 1) ** 2 - 1))
            legendre[n, m] = a * (z * legendre[n - 1, m] - b * legendre[n - 2, m])
    values, by_turn, by_height = [], [], []
    for n in range(1, degree + 1):
        for m in range(n + 1):
            p = legendre[n, m]
            lower = legendre[n - 1, m] if m < n else 0 * z
            slope = (math.sqrt((2 * n + 1) / (2 * n - 1) * (n * n - m * m)) * lower - n * z * p) / np.maximum(s, 1e-9)
            norm = math.sqrt(2) if m else 1
            values.append(norm * p * np.cos(m * turn))
            by_turn.append(-norm * m * p * np.sin(m * turn))
            by_height.append(norm * slope * np.cos(m * turn))  # by the elevation
    return np.array(values), np.array(by_turn), np.array(by_height)


def refine(half, degree):
    """Newton's method with least movement. None where it does not come to a design."""
    turn, height = np.arctan2(half[:, 0], half[:, 1]), np.arcsin(half[:, 2])
    for _ in range(60):
        points = np.stack((np.cos(height) * np.sin(turn), np.cos(height) * np.cos(turn), np.sin(height)), 1)
        values, by_turn, by_height = harmonics(points, degree)
        error = values.sum(1)
        if np.abs(error).max() < 1e-13 * len(half):
            return points
        slopes = np.concatenate((by_turn, by_height), 1)
        move = np.linalg.lstsq(slopes, -error, rcond=1e-9)[0]
        move *= min(1, 0.1 / np.abs(move).max() / math.sqrt(len(half)))
        turn, height = turn + move[:len(half)], height + move[len(half):]
    return None


def smallest_angle_deg(points):
    cosines = points @ points.T - 4 * np.eye(len(points))
    return math.degrees(math.acos(min(1, cosines.max())))


def quadrature_error(points, degree):
    """The largest mean over the points of any harmonic of degrees 1 to `degree`, all of them orthonormal times
    sqrt(4 pi); by the sum over all harmonics of a degree, which are Legendre polynomials of pairs of points."""
    cosines = np.clip(points @ points.T, -1, 1)
    before, present, worst = np.ones_like(cosines), cosines, 0.0
    for n in range(1, degree + 1):
        worst = max(worst, math.sqrt(max(0.0, (2 * n + 1) * present.mean())))
        before, present = present, ((2 * n + 1) * cosines * present - n * before) / (n + 1)
    return worst


def design_degree(points):
    degree = 0
    while quadrature_error(points, degree + 1) < 1e-6:
        degree += 1
    return degree


def even_set(count):
    """The design of the highest degree whose points keep apart."""
    start = at_rest(count)
    distance = smallest_angle_deg(both_sides(start))
    # So many equations have unknowns left beside the one turn about the left-right axis.
    degree = int((math.sqrt(9 + 8 * (count - 1)) - 3) / 2)
    while degree > 1:
        half = refine(start, degree)
        if half is not None and smallest_angle_deg(both_sides(half)) > 0.85 * distance:
            return both_sides(half)
        degree -= 1
    return both_sides(start)


def rows_of(points):
    """Azimuth and elevation in degrees, from the bottom up, the left of a pair first."""
    directions = []
    for x, y, z in points:
        azimuth = round(math.degrees(math.atan2(x, y)), 8) + 0.0 if math.hypot(x, y) > 1e-9 else 0.0
        directions.append((180.0 if azimuth == -180 else azimuth, round(math.degrees(math.asin(max(-1, min(1, z)))), 8) + 0.0))
    return sorted(directions, key=lambda d: (d[1], abs(d[0]), d[0]))


def points_of(rows):
    azimuth, elevation = np.radians(np.array(rows)).T
    return np.stack((np.sin(azimuth) * np.cos(elevation), np.cos(azimuth) * np.cos(elevation), np.sin(elevation)), 1)


def text_of(sets):
    lines = ["// SPDX-License-Identifier: MIT", "// Made by tools/make_sphere_points.py",
             '#include "math/VelkDspSpherePoints.h"', "", "namespace tav {", "namespace {", "", "// clang-format off", ""]
    for k, (name, degree, rows) in enumerate(sets):
        lines.append(f"constexpr SphereDirection kSet{k}[] = {{  // {name}")
        line = "   "
        for azimuth, elevation in rows:
            item = f" {{{azimuth:.10g}, {elevation:.10g}}},"
            if len(line) + len(item) > 116:
                lines.append(line)
                line = "   "
            line += item
        lines += [line, "};"]
    lines += ["", "constexpr SphereSet kSets[] = {",
              "    // name  design of degree  smallest angle in degrees  directions"]
    for k, (name, degree, rows) in enumerate(sets):
        lines.append(f'    {{"{name}", {degree}, {smallest_angle_deg(points_of(rows)):.4f}, kSet{k}}},')
    lines += ["};", "// clang-format on", "", "}  // namespace", "",
              "std::span<const SphereSet> SphereSets() noexcept { return kSets; }", "", "}  // namespace tav", ""]
    return "\n".join(lines)


def read_back():
    text = TARGET.read_text(encoding="utf-8")
    directions = {number: [tuple(map(float, pair)) for pair in re.findall(r"\{([-\d.e]+), ([-\d.e]+)\}", body)]
                  for number, body in re.findall(r"kSet(\d+)\[\] = \{[^\n]*\n(.*?)\n\};", text, re.S)}
    return [(name, int(degree), directions[number])
            for name, degree, number in re.findall(r'\{"([\w-]+)", (\d+), [\d.]+, kSet(\d+)\}', text)]


def make():
    sets = []
    for name, points in platonic():
        sets.append((name, design_degree(unit(points)), rows_of(unit(points))))
    for count in COUNTS:
        points = even_set(count)
        sets.append((f"sphere-{count}", design_degree(points), rows_of(points)))
    return sets


def main(arguments):
    if arguments not in ([], ["--check"]):
        print(__doc__)
        return 2
    if not arguments:
        TARGET.write_text(text_of(make()), encoding="utf-8")
    expected = [(name, len(points)) for name, points in platonic()] + [(f"sphere-{n}", n) for n in COUNTS]
    sets = read_back()
    faults = int([(name, len(rows)) for name, _, rows in sets] != expected)
    if faults:
        print(f"the file does not hold these sets, and no others: {expected}")
    print("set  points  design  smallest angle  (of the best packing at most)  error up to it  error one degree beyond")
    for name, degree, rows in sets:
        points = points_of(rows)
        # No set of n points has all distances above this (L. Fejes Toth, 1943).
        a = len(rows) * math.pi / (6 * (len(rows) - 2))
        bound = math.degrees(math.acos((1 / math.tan(a) ** 2 - 1) / 2))
        error, beyond = quadrature_error(points, degree), quadrature_error(points, degree + 1)
        print(f"{name:14} {len(rows):4} {degree:4} {smallest_angle_deg(points):9.4f} {bound:9.4f} {error:9.1e} {beyond:9.1e}")
        faults += error > 1e-6 or beyond < 1e-6
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
