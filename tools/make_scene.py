#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a scene in which sources move along straight lines in azimuth, elevation and distance, or in x, y, z.

    make_scene.py [--layout NAME] [--speakers "AZ EL  AZ EL ..."] [--xyz] [--say STATEMENT]... [--options "--ambix"]
                  [--step SECONDS] BOX PATH... > scene.txt

BOX        the object's box text without its name: "1 4 vbap2d @interpolationtime 50"
PATH       one a source: key points "SECONDS:AZIMUTH,ELEVATION,DISTANCE SECONDS:..."; degrees and metres
--xyz      the paths are "SECONDS:X,Y,Z ...", the loudspeakers "X Y Z  X Y Z ..."
--say      any other statement of the scene, with or without a time
--options  what scripts/demo gives the host for this scene
"""
import argparse
import shlex
import sys


def number(value):
    return f"{round(value, 4) + 0.0:.6g}"


def key_points(path):
    points = []
    for word in path.split():
        time, _, place = word.partition(":")
        points.append((float(time), [float(x) for x in place.split(",")]))
    return sorted(points)


def place_at(points, time):
    for (t0, p0), (t1, p1) in zip(points, points[1:]):
        if t0 <= time <= t1:
            w = (time - t0) / (t1 - t0)
            return [a + w * (b - a) for a, b in zip(p0, p1)]
    return None


def atoms(place, xyz):
    if xyz:
        return "xyz " + " ".join(map(number, place))
    azimuth = (place[0] + 180.0) % 360.0 - 180.0
    return f"aed {number(azimuth)} {number(place[1])} {number(place[2])}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--layout")
    parser.add_argument("--speakers")
    parser.add_argument("--xyz", action="store_true")
    parser.add_argument("--say", action="append", default=[])
    parser.add_argument("--options")
    parser.add_argument("--step", type=float, default=0.05)
    parser.add_argument("box")
    parser.add_argument("path", nargs="+")
    args = parser.parse_args()
    paths = [key_points(path) for path in args.path]
    print("# Made by: tools/make_scene.py " + shlex.join(sys.argv[1:]))
    if args.options:
        print("#! " + args.options)
    print("object quilo.pan~ " + args.box)
    if args.layout:
        print("host layout " + args.layout)
    if args.speakers:
        print(("speakers xyz " if args.xyz else "speakers ae ") + " ".join(args.speakers.split()))
    for statement in args.say:
        print(statement)
    for index, points in enumerate(paths, 1):
        print(f"source {index} {atoms(points[0][1], args.xyz)}")
    # The last key point is where the scene ends: nothing would be heard of a statement there.
    for step in range(1, round(max(points[-1][0] for points in paths) / args.step)):
        for index, points in enumerate(paths, 1):
            place = place_at(points, step * args.step)
            if place:
                print(f"at {number(step * args.step)} source {index} {atoms(place, args.xyz)}")


if __name__ == "__main__":
    main()
