#!/usr/bin/env python3
"""Describes the demo shot for a folder of images, as JSON for `montaray-scene build`.

    make_shot.py DRAWN_ART [OTHER_ART] >shot.json

DRAWN_ART is what draw_art.py made. With OTHER_ART the images of that folder take the places of the
background (the largest) and of the creature (all others in the order of their names).
"""

import json
import subprocess
import sys
from pathlib import Path

FRAMES = 72
HOLD = 2  # the creature is animated on twos
WORLD = (1200.0, 675.0)  # what the background has to cover, in world units
CREATURE_HEIGHT = 240.0
UNITS_PER_INCH = 60.0
IMAGES = {".png", ".jpg", ".jpeg", ".tif", ".tiff", ".gif", ".tga"}


class Image:
    """A file with its size in pixels and in world units."""

    def __init__(self, path):
        self.path = path.resolve()
        text = subprocess.run(["identify", "-format", "%w %h %x %U\n", f"{path}[0]"],
                              check=True, capture_output=True, text=True).stdout.split()
        self.pixels = int(text[0]) * int(text[1])
        unit = {"PixelsPerInch": 1.0, "PixelsPerCentimeter": 2.54}.get(text[3])
        size = UNITS_PER_INCH / (float(text[2]) * unit) if unit else 1.0
        self.width, self.height = int(text[0]) * size, int(text[1]) * size


def images_of(folder):
    return [Image(path) for path in sorted(Path(folder).iterdir())
            if path.suffix.lower() in IMAGES]


def key(frame, value, **more):
    return {"frame": frame, "value": value, **more}


def picture(name, images, hold=1):
    """A raster node that shows the images one after the other, over and over."""
    keys = [{"frame": frame, "file": str(images[index % len(images)].path)}
            for index, frame in enumerate(range(1, FRAMES + 1 if len(images) > 1 else 2, hold))]
    return {"name": name, "type": "BG/OL", "columns": {"BG/OL": keys}}


def transform(name, source, scale, move):
    return {"name": name, "type": "Transform", "inputs": [source],
            "columns": {"Move": move, "Scale": [key(1, scale)]}}


def describe(background, creature, overlay):
    cover = max(WORLD[0] / background.width, WORLD[1] / background.height)
    grown = CREATURE_HEIGHT / max(image.height for image in creature)
    walk = {"knots": [{"at": [-290, -165], "out": [140, 26]},
                      {"at": [120, -156], "in": [-140, 26]}],
            "keys": [{"frame": 1, "knot": 1, "ease": [0.35, 0.25, 0.6, 0.95]},
                     {"frame": FRAMES - 8, "knot": 2}]}
    against_camera = {"column": ["Camera", "Move", "x"], "ratio": -0.87}
    return {
        "length": FRAMES,
        "cover_sheet": {"frame_rate": 24, "aspect_ratio": 16 / 9, "director": "montaraystore",
                        "production_name": "The lantern"},
        "notes": [{"frame": 1, "text": "Walks over the rise, on twos"},
                  {"frame": FRAMES - 8, "text": "Stops and listens"}],
        "nodes": [
            {"name": "Output", "class": "CNodeRostrum", "inputs": ["Camera"]},
            {"name": "Camera", "type": "Camera",
             "inputs": ["Reeds in front", "Creature walks", "Background fits", "Card"],
             "columns": {
                 "Move": {"x": [key(1, -60, ease="in_out"), key(FRAMES, 90)],
                          "y": [key(1, -40, ease="in_out"), key(FRAMES, -100)]},
                 "Angle": [key(1, 0, ease="in_out"), key(FRAMES, 1.5)],
                 "Size": [key(1, 1000, ease="in_out"), key(FRAMES, 640)]}},
            transform("Reeds in front", "Reeds", 1.1 * WORLD[0] / overlay.width,
                      {"x": [key(1, 70, follows=against_camera)], "y": [key(1, 10)]}),
            transform("Creature walks", "Creature", grown, {"path": walk}),
            transform("Background fits", "Background", cover, {"xy": [key(1, [0, 0])]}),
            picture("Reeds", [overlay]),
            picture("Creature", creature, HOLD),
            picture("Background", [background]),
            {"name": "Card", "type": "Color Card",
             "columns": {"Color": [key(1, [0.13, 0.19, 0.37]), key(FRAMES, [0.95, 0.65, 0.37])]}},
        ],
    }


def main():
    drawn = Path(sys.argv[1])
    background, creature = Image(drawn / "background.png"), images_of(drawn / "walk")
    if len(sys.argv) > 2:
        images = images_of(sys.argv[2])
        if len(images) < 2:
            sys.exit(f"{sys.argv[2]}: a background and a drawing are needed, images by the dozen "
                     "are better")
        background = max(images, key=lambda image: image.pixels)
        creature = [image for image in images if image is not background]
    json.dump(describe(background, creature, Image(drawn / "overlay.png")), sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    main()
