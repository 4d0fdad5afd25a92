#!/usr/bin/env python3
"""Backgrounds in tiles: how they are made, and that a pan over one reads what it shows.

    tiled_images_test.py BIN_FOLDER

With MONTARAY_LONG in the environment the background has 32,768 by 8,192 pixels, otherwise 6,144 by
1,536.
"""

import os
import subprocess
import unittest

from programs import BIN, InFolder, images, output, run

LONG = "MONTARAY_LONG" in os.environ
WIDTH, HEIGHT = (32768, 8192) if LONG else (6144, 1536)
SHOWN = (1920, 1080) if LONG else (320, 180)
MEGABYTE = 1024  # in the unit of ru_maxrss


def write_background(path):
    """Colours that differ from row to row and from tile to tile."""
    texture = bytes((i * i * 31 + i * 7) >> 3 & 31 for i in range(4099))
    line = texture * (3 * WIDTH // len(texture) + 2)
    with open(path, "wb") as file:
        file.write(b"P6 %d %d 255\n" % (WIDTH, HEIGHT))
        for y in range(HEIGHT):
            start = y // 16 * 37 % len(texture)
            lift = y * 224 // HEIGHT
            table = bytes(min(255, value + lift) for value in range(256))
            file.write(line[start:start + 3 * WIDTH].translate(table))


def peak_of(*command):
    """Exit status and most memory of a run."""
    with subprocess.Popen([str(part) for part in command]) as process:
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_maxrss


class TiledImages(InFolder):
    def setUp(self):
        super().setUp()
        self.plain = self.folder / "sky.ppm"
        self.tiled = self.folder / "sky.tif"
        write_background(self.plain)

    def render_pan(self, image):
        """Along the rows of the image, one below the other; the last frame shows all of it."""
        sweeps, steps = (8, 18) if LONG else (2, 4)
        frames = sweeps * steps
        at = [(-WIDTH / 2 + WIDTH * (i % steps) / (steps - 1),
               -HEIGHT / 2 + HEIGHT * (i // steps) / (sweeps - 1)) for i in range(frames)]
        move = [{"frame": i + 1, "value": list(place), "mode": "hold"}
                for i, place in enumerate([*at, (0, 0)])]
        camera = {"name": "Camera", "type": "Camera", "inputs": ["sky"],
                  "columns": {"Move": {"xy": move},
                              "Size": [{"frame": 1, "value": SHOWN[0], "mode": "hold"},
                                       {"frame": frames + 1, "value": WIDTH}]}}
        scene = self.make_scene([output("Camera"), camera, images("sky", image)],
                                name=image.suffix[1:], length=frames + 1,
                                cover_sheet={"aspect_ratio": SHOWN[0] / SHOWN[1]})
        folder = self.folder / ("frames" + image.suffix)
        status, peak = peak_of(BIN / "CMontaray", "image", "-width", SHOWN[0], "-silent", "-tga",
                               "-o", folder, scene)
        self.assertEqual(status, 0)
        shown = sorted(folder.iterdir())
        self.assertEqual(len(shown), frames + 1)
        return shown, peak

    def test_a_pan_reads_what_it_shows(self):
        status, peak = peak_of(BIN / "montaray-scene", "tile", self.plain, self.tiled)
        self.assertEqual(status, 0)
        tiled, tiled_peak = self.render_pan(self.tiled)
        print(f"{WIDTH} by {HEIGHT}: tiled in {peak // MEGABYTE} MB, "
              f"{len(tiled)} frames in {tiled_peak // MEGABYTE} MB")
        if LONG:
            self.assertLess(tiled_peak, 700 * MEGABYTE)
            return
        plain, plain_peak = self.render_pan(self.plain)
        self.assertLess(tiled_peak, plain_peak - 15 * MEGABYTE)
        for one, other in zip(tiled, plain):
            ours, theirs = one.read_bytes(), other.read_bytes()
            self.assertEqual(len(ours), len(theirs))
            self.assertLessEqual(max(abs(a - b) for a, b in zip(ours, theirs)), 1, one.name)

    def test_an_image_that_cannot_be_tiled_leaves_no_file(self):
        self.plain.write_bytes(self.plain.read_bytes()[:-1])
        refused = run("montaray-scene", "tile", self.plain, self.tiled)
        self.assertEqual((refused.returncode, refused.stderr),
                         (1, f"montaray-scene: Can't read image {self.plain}: "
                             "the PNM file ends too early, or is damaged\n"))
        nowhere = self.folder / "none" / "sky.tif"
        self.plain.write_bytes(b"P5 1 1 255\n.")
        refused = run("montaray-scene", "tile", self.plain, nowhere)
        self.assertEqual((refused.returncode, refused.stderr),
                         (1, f"montaray-scene: Can't write image {nowhere}: "
                             "No such file or directory\n"))
        self.assertEqual(run("montaray-scene", "tile", self.plain).returncode, 2)
        self.assertEqual([file.name for file in self.folder.iterdir()], ["sky.ppm"])


if __name__ == "__main__":
    unittest.main()
