#!/usr/bin/env python3
"""How much memory a large frame takes, and that a long run takes no more than a short one.

    soak_test.py BIN_FOLDER

With MONTARAY_LONG in the environment the large frame has 4096 by 3112 pixels and the long run has
500 frames, otherwise 1024 by 778 and 160.
"""

import os
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "command_line"))

from programs import BIN, InFolder, images, output  # pylint: disable=wrong-import-position

LONG = "MONTARAY_LONG" in os.environ
LARGE = (4096, 3112) if LONG else (1024, 778)
SMALL = (320, 240)
SHORT_RUN, LONG_RUN = (50, 500) if LONG else (40, 160)
CELS = 12
DRAWINGS = 5  # of each cel, over and over
MEGABYTE = 1 << 20

# The address sanitizer would keep what is freed, to see who still looks at it.
os.environ["ASAN_OPTIONS"] = ":".join(filter(None, [
    os.environ.get("ASAN_OPTIONS"), "quarantine_size_mb=0", "thread_local_quarantine_size_kb=0"]))


def write_targa(path, width, height, number):
    """Stripes: all over for number 0, in the middle of a cel for the others."""
    line = b"".join(bytes((x * 3 & 255, (x >> 2) + number * 20 & 255, 90, 255))
                    for x in range(width))
    third = width // 3 * 4
    cel_line = bytes(third) + line[third:-third] + bytes(third)
    head = bytes((0, 0, 2, *[0] * 9, *width.to_bytes(2, "little"), *height.to_bytes(2, "little"),
                  32, 0x28))
    with open(path, "wb") as file:
        file.write(head)
        for y in range(height):
            is_painted = height // 3 <= y < height * 2 // 3
            file.write(line if number == 0 else cel_line if is_painted else bytes(width * 4))


def place(number, size):
    """Turns and scales a picture of half the frame's size, and keeps it moving."""
    x, y = (size[0] * (number % 4 - 1.5) / 8, size[1] * (number // 4 - 1) / 8) if number else (0, 0)
    angle = 3.7 * number - 20 if number else 0
    return {"name": f"Layer {number}", "type": "Transform", "inputs": [f"Picture {number}"],
            "columns": {"Move": {"x": [{"frame": 1, "value": x}], "y": [{"frame": 1, "value": y}]},
                        "Scale": [{"frame": 1, "value": 0.8 + 0.05 * number if number else 2.2}],
                        "Angle": [{"frame": 1, "value": angle},
                                  {"frame": LONG_RUN, "value": angle + 5}]}}


class Soak(InFolder):
    def make_layers(self, size, drawings=1):
        """A background with cels over it, `size` world units seen."""
        pictures = []
        for number in range(CELS + 1):
            files = [self.folder / f"{number}.{drawing}.tga" for drawing in range(drawings)]
            for drawing, file in enumerate(files):
                write_targa(file, size[0] // 2, size[1] // 2, number and number + drawing)
            shown = files * (LONG_RUN // drawings) if drawings > 1 else files
            pictures.append(images(f"Picture {number}", *shown))
        layers = [place(number, size) for number in range(CELS, -1, -1)]
        camera = {"name": "Camera", "type": "Camera",
                  "inputs": [layer["name"] for layer in layers],
                  "columns": {"Size": [{"frame": 1, "value": size[0]}]}}
        return self.make_scene([output("Camera"), camera, *layers, *pictures], length=LONG_RUN,
                               cover_sheet={"aspect_ratio": size[0] / size[1]})

    def peak_of_render(self, scene, size, *options):
        """In bytes."""
        frames = self.folder / "frames"
        command = [BIN / "CMontaray", "image", "-width", size[0], "-height", size[1], "-silent",
                   "-o", frames, *options, scene]
        with subprocess.Popen([str(part) for part in command]) as process:
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        return usage.ru_maxrss * 1024

    def test_a_large_frame_takes_its_pictures_and_itself_twice(self):
        scene = self.make_layers(LARGE)
        program = self.peak_of_render(self.make_scene([output()], name="empty"), SMALL)
        for bits, option in ((8, "-tiff"), (16, "-tiff16")):
            frame = LARGE[0] * LARGE[1] * 3 * bits // 8
            pictures = frame // 3 * (CELS + 1)  # with alpha, and a quarter of the pixels
            peak = self.peak_of_render(scene, LARGE, option, "1")
            print(f"{LARGE[0]} by {LARGE[1]}, {bits} bits: {peak // MEGABYTE} MB, of which "
                  f"{pictures // MEGABYTE} pictures, {frame // MEGABYTE} the frame, "
                  f"{program // MEGABYTE} the program")
            self.assertGreater(peak, pictures + frame, "not all was drawn")
            self.assertLess(peak, program + pictures + 2 * frame + 8 * MEGABYTE)

    def test_a_long_run_takes_no_more_than_a_short_one(self):
        scene = self.make_layers(SMALL, DRAWINGS)
        peaks = []
        for frames in (SHORT_RUN, LONG_RUN):
            peaks.append(self.peak_of_render(scene, SMALL, f"1-{frames}"))
            self.assertEqual(len(list((self.folder / "frames").iterdir())), frames)
        print(*(f"{frames} frames: {peak / MEGABYTE:.1f} MB"
                for frames, peak in zip((SHORT_RUN, LONG_RUN), peaks)), sep=", ")
        self.assertLess(peaks[1], peaks[0] + 2 * MEGABYTE)


if __name__ == "__main__":
    unittest.main()
