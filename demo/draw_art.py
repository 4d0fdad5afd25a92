#!/usr/bin/env python3
"""Draws the artwork of the demo shot into a folder: a painted dusk landscape, a creature that
walks with a lantern (twelve drawings), and reeds that stand before it all.

Uses ImageMagick as the pencil. All pictures have 120 pixels an inch.
"""

import math
import random
import subprocess
import sys
from pathlib import Path

DENSITY = ["-units", "PixelsPerInch", "-density", "120"]
BARE = ["-define", "png:exclude-chunks=date,time,text"]  # the same picture, the same file
BACKGROUND = (2400, 1350)
CREATURE = (420, 480)
DRAWINGS = 12


def convert(*arguments):
    subprocess.run(["convert", *DENSITY, *map(str, arguments)], check=True)


def polygon(points):
    return "polygon " + " ".join(f"{x:.1f},{y:.1f}" for x, y in points)


def ridge(width, height, base, roughness, seed):
    """The outline of a row of hills: a sum of waves, closed along the bottom edge."""
    dice = random.Random(seed)
    waves = [(dice.uniform(0.6, 1.4) * n, dice.uniform(0, 6.3), 1.0 / n) for n in range(1, 9)]
    outline = [(x, base - roughness * sum(a * math.sin(6.3 * f * x / width + p)
                                          for f, p, a in waves))
               for x in range(0, width + 8, 8)]
    return outline + [(width, height), (0, height)]


def tree(x, ground, size, dice):
    """A fir in three tiers that lean a little."""
    lean = dice.uniform(-0.04, 0.04) * size
    shapes = [polygon([(x - 0.03 * size, ground), (x + 0.03 * size, ground), (x + lean, ground - size)])]
    for tier in range(3):
        top = ground - size * (0.5 + 0.25 * tier)
        half = size * (0.24 - 0.06 * tier)
        shapes.append(polygon([(x - half, top + 0.34 * size), (x + half, top + 0.34 * size),
                               (x + lean * tier / 2, top - 0.12 * size)]))
    return " ".join(shapes)


def draw_background(path):
    width, height = BACKGROUND
    dice = random.Random(7)
    stars = " ".join(f"circle {x:.0f},{y:.0f} {x + r:.1f},{y:.0f}" for x, y, r in
                     ((dice.uniform(0, width), dice.uniform(0, 520), dice.uniform(0.8, 2.6))
                      for _ in range(160)))
    layers = ["-size", f"{width}x{height}", "gradient:#22305e-#f2a65e",
              "-fill", "#fff6d8", "-draw", stars,
              "(", "-size", f"{width}x{height}", "xc:none", "-fill", "#ffe9b0",
              "-draw", "circle 1650,520 1790,520", "-blur", "0x3", ")", "-composite",
              "(", "-size", f"{width}x{height}", "xc:none", "-fill", "#ffd98a70",
              "-draw", "circle 1650,520 1980,520", "-blur", "0x90", ")", "-composite"]
    for number, (colour, base, rough) in enumerate([("#7d6a8c", 760, 70), ("#574f78", 860, 60),
                                                    ("#39405f", 960, 45)]):
        hills = ridge(width, height, base, rough, 11 + number)
        spots = [dice.choice(hills[:-3]) for _ in range(14 * (number + 1))]
        firs = " ".join(tree(x, y + 12, dice.uniform(60, 120), dice) for x, y in spots)
        layers += ["(", "-size", f"{width}x{height}", "xc:none", "-fill", colour, "-draw",
                   polygon(hills) + " " + firs,
                   "-blur", f"0x{2.2 - 0.7 * number:.1f}", ")", "-composite"]
    layers += ["(", "-size", f"{width}x{height}", "xc:none", "-fill", "#20293c", "-draw",
               polygon(ridge(width, height, 1120, 14, 29)), ")", "-composite",
               "(", "-size", f"{width}x{height}", "xc:none", "-fill", "#4a4a3e", "-draw",
               polygon([(0, 1165), (800, 1148), (1600, 1152), (2400, 1168), (2400, 1236),
                        (1500, 1216), (700, 1212), (0, 1240)]), "-blur", "0x3", ")", "-composite",
               "(", "-seed", 5, "-size", "600x338", "plasma:grey-grey", "-resize",
               f"{width}x{height}!", "-blur", "0x2", "-colorspace", "gray", ")",
               "-compose", "softlight", "-composite"]
    convert(*layers, *BARE, f"PNG24:{path}")


def limb(hip, angle, length, bend):
    """Hip, knee and foot of a leg that swings by `angle` and bends at the knee by `bend`."""
    knee = (hip[0] + length * math.sin(angle), hip[1] + length * math.cos(angle))
    shin = angle - bend
    return hip, knee, (knee[0] + length * math.sin(shin), knee[1] + length * math.cos(shin))


def line(points):
    return "stroke-linecap round stroke-linejoin round polyline " + " ".join(f"{x:.1f},{y:.1f}" for x, y in points)


def leg(phase, hip):
    """The polyline of a leg and the ellipse of its foot."""
    bend = 0.25 + 0.75 * max(0.0, math.sin(phase + 0.6))
    points = limb(hip, 0.55 * math.cos(phase) + 0.1, 62, bend)
    foot = points[-1]
    return line(points), f"ellipse {foot[0] + 12:.1f},{foot[1] + 6:.1f} 32,16 0,360"


def draw_creature(path, step):
    width, height = CREATURE
    phase = 2 * math.pi * step / DRAWINGS
    bob = 9 * math.cos(2 * phase)
    x, y = width * 0.46, 222 + bob
    squash = 4 * math.cos(2 * phase)
    tail = [(x - 60 - 17 * n, y - 70 + 7 * n + 3 * n * math.sin(phase - 0.7 * n)) for n in range(7)]
    lantern = (x + 128 + 8 * math.sin(phase), y + 62 + 4 * math.cos(phase))
    far, near = leg(phase + math.pi, (x + 14, y + 86)), leg(phase, (x - 18, y + 90))
    pen = ["-fill", "none", "-draw"]
    arguments = ["-size", f"{width}x{height}", "xc:none",
                 "(", "-size", f"{width}x{height}", "xc:none", "-fill", "#ffc95a80", "-draw",
                 f"circle {lantern[0]:.1f},{lantern[1]:.1f} {lantern[0] + 62:.1f},{lantern[1]:.1f}",
                 "-blur", "0x22", ")", "-composite",
                 "-stroke", "#5b2f22", "-strokewidth", 30, *pen, far[0],
                 "-stroke", "none", "-fill", "#4a261c", "-draw", far[1],
                 "-stroke", "#3f1d17", "-strokewidth", 5, "-fill", "#c8643a", "-draw",
                 f"ellipse {x:.1f},{y:.1f} {104 + squash:.1f},{118 - squash:.1f} 0,360",
                 "-fill", "#f0c48c", "-stroke", "none", "-draw",
                 f"ellipse {x + 26:.1f},{y + 34:.1f} {60 + squash:.1f},{66 - squash:.1f} 0,360",
                 "-stroke", "#3f1d17", "-strokewidth", 5, "-fill", "#c8643a", "-draw",
                 polygon([(x - 62, y - 84), (x - 74, y - 158 - bob), (x - 14, y - 108)]),
                 "-draw", polygon([(x + 20, y - 108), (x + 70, y - 160 + bob), (x + 78, y - 78)]),
                 "-stroke", "none", "-fill", "white", "-draw",
                 f"circle {x + 40:.1f},{y - 40:.1f} {x + 60:.1f},{y - 40:.1f}",
                 "-fill", "#1d1512", "-draw",
                 f"circle {x + 47:.1f},{y - 38:.1f} {x + 57:.1f},{y - 38:.1f}",
                 "-draw", f"ellipse {x + 92:.1f},{y - 8:.1f} 13,10 0,360",
                 "-stroke", "#b02a3a", "-strokewidth", 26, *pen, line(tail),
                 "-stroke", "#c73a48", "-strokewidth", 26, *pen,
                 line([(x - 66, y - 72), (x + 10, y - 62), (x + 84, y - 70)]),
                 "-stroke", "#6d3a28", "-strokewidth", 32, *pen, near[0],
                 "-stroke", "none", "-fill", "#55301f", "-draw", near[1],
                 "-stroke", "#6d3a28", "-strokewidth", 24, *pen,
                 line([(x + 40, y + 30), (x + 86, y + 34 - bob / 2), (lantern[0], lantern[1] - 44)]),
                 "-stroke", "#2b2420", "-strokewidth", 4, "-fill", "#ffd36b", "-draw",
                 f"roundrectangle {lantern[0] - 20:.1f},{lantern[1] - 28:.1f} "
                 f"{lantern[0] + 20:.1f},{lantern[1] + 28:.1f} 9,9"]
    convert(*arguments, *BARE, f"PNG32:{path}")


def draw_overlay(path):
    width, height = BACKGROUND
    dice = random.Random(3)
    blades = []
    for _ in range(150):
        x, tall, lean = dice.uniform(-40, width + 40), dice.uniform(90, 330), dice.uniform(-60, 60)
        blades.append(polygon([(x - 7, height), (x + 7, height), (x + lean, height - tall)]))
    convert("-size", f"{width}x{height}", "xc:none", "-fill", "#0d1420", "-draw", " ".join(blades),
            "-blur", "0x2.5", *BARE, f"PNG32:{path}")


def main():
    folder = Path(sys.argv[1])
    (folder / "walk").mkdir(parents=True, exist_ok=True)
    draw_background(folder / "background.png")
    draw_overlay(folder / "overlay.png")
    for step in range(DRAWINGS):
        draw_creature(folder / "walk" / f"walk.{step + 1:04}.png", step)


if __name__ == "__main__":
    main()
