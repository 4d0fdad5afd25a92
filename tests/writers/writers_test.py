#!/usr/bin/env python3
"""What each writer writes, as programs read it that are not ours.

    writers_test.py WRITE_PICTURE
"""

import functools
import math
import re
import resource
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

WRITE_PICTURE = Path(sys.argv.pop(1)).resolve()
WIDTH, HEIGHT = 90, 130  # more rows than a strip of TIFF has
CANNOT_OPEN, NO_ROOM, WRONG_SIZE, NO_PIXELS, CANNOT_RENAME, NO_WRITER = 1, 2, 5, 6, 7, 100
EXTENSIONS = {"TiffWriter": "tif", "TargaWriter": "tga", "PngWriter": "png", "PictWriter": "pict",
              "CinesiteWriter": "cin", "YUVWriter": "yuv", "YIQWriter": "yiq"}


def pack(samples, bits, order="<"):
    return struct.pack(f"{order}{len(samples)}{'B' if bits == 8 else 'H'}", *samples)


@functools.cache
def soft_patch(samples, bits):
    """Colours of every level under an alpha that grows from left to right, premultiplied."""
    full = (1 << bits) - 1
    pixels = []
    for y in range(HEIGHT):
        for x in range(WIDTH):
            alpha = full * x // (WIDTH - 1) if samples == 4 else full
            for c in range(3):
                level = (x * 37 + y * (19 + c * 50)) * 7919 % (full + 1)
                pixels.append((level * alpha + full // 2) // full)
            pixels.extend([alpha] * (samples - 3))
    return pixels


def straight(pixels, samples, bits):
    if samples == 3:
        return pixels
    full = (1 << bits) - 1
    divided = []
    for i in range(0, len(pixels), 4):
        alpha = pixels[i + 3]
        divided += [min((v * full + alpha // 2) // alpha, full) if alpha else 0
                    for v in pixels[i:i + 3]] + [alpha]
    return divided


def without_samples(data, samples, first, last):
    return bytes(v for i, v in enumerate(data) if not first <= i % samples < last)


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (200, 200))


class Writers(unittest.TestCase):
    def setUp(self):
        self.keeper = tempfile.TemporaryDirectory()
        self.folder = Path(self.keeper.name)

    def tearDown(self):
        self.keeper.cleanup()

    def tool(self, *command):
        result = subprocess.run(list(map(str, command)), cwd=self.folder, capture_output=True,
                                check=False, timeout=60)
        self.assertEqual(result.returncode, 0, (command, result.stderr))
        return result.stdout

    def try_to_write(self, writer, variant, size, samples, pixels, name="a", bits=8, more=(),
                     **options):
        (self.folder / "pixels").write_bytes(pack(pixels, bits))
        return subprocess.run(
            [WRITE_PICTURE, writer, str(variant), *map(str, size), str(samples), str(bits),
             "pixels", name, *more], cwd=self.folder, check=False, timeout=60,
            **options).returncode

    def write(self, writer, variant, size, samples, pixels, **more):
        self.assertEqual(self.try_to_write(writer, variant, size, samples, pixels, **more), 0)
        return self.folder / f"a.{EXTENSIONS[writer]}"

    def write_patch(self, writer, variant, samples, bits, more=()):
        return self.write(writer, variant, (WIDTH, HEIGHT), samples, soft_patch(samples, bits),
                          bits=bits, more=more)

    def test_tiff_holds_the_bytes_of_the_picture(self):
        for variant, samples, bits, more, compression in (
                (1, 4, 8, (), "AdobeDeflate"), (1, 3, 8, (), "AdobeDeflate"),
                (1, 4, 16, (), "AdobeDeflate"), (1, 3, 16, (), "AdobeDeflate"),
                (1, 4, 8, ("lzw",), "LZW"), (1, 3, 16, ("lzw",), "LZW"),
                (0, 4, 8, (), "None"), (0, 3, 8, ("lzw",), "None"), (0, 4, 16, (), "None")):
            file = self.write_patch("TiffWriter", variant, samples, bits, more)
            told = self.tool("tiffinfo", file).decode()
            for words in (f"Compression Scheme: {compression}\n", f"Bits/Sample: {bits}\n",
                          "Resolution: 120, 180 pixels/inch\n", "Rows/Strip: 64\n",
                          "Software: montaraystore\n"):
                self.assertIn(words, told)
            self.assertEqual("Extra Samples: 1<assoc-alpha>\n" in told, samples == 4)
            self.assertEqual("horizontal differencing" in told, compression != "None")
            self.tool("raw2tiff", "-w", WIDTH, "-l", HEIGHT, "-b", samples, "-d",
                      "byte" if bits == 8 else "short", "-p", "rgb", "pixels", "raw.tif")
            self.tool("tiffcmp", "-t", file, "raw.tif")  # which fails for another sample
            if samples == 3:
                read = self.tool("gm", "convert", file, "-depth", bits, "-endian", "lsb", "rgb:-")
                self.assertEqual(read, (self.folder / "pixels").read_bytes())

    def test_png_and_targa_hold_straight_alpha(self):
        for writer, samples, bits, depth in (
                ("PngWriter", 4, 8, 8), ("PngWriter", 3, 8, 8), ("PngWriter", 4, 16, 16),
                ("PngWriter", 3, 16, 16), ("TargaWriter", 4, 8, 8), ("TargaWriter", 3, 8, 8)):
            file = self.write_patch(writer, 0, samples, bits)
            expected = pack(straight(soft_patch(samples, bits), samples, bits), bits, ">")
            layout = "rgba:-" if samples == 4 else "rgb:-"
            for program in (["gm", "convert"], ["convert-im6.q16"]):
                read = self.tool(*program, file, "-depth", depth, "-endian", "msb", layout)
                self.assertEqual(read, expected, (program, writer, samples, bits))
            if writer == "TargaWriter":
                self.assertEqual(file.read_bytes()[-18:], b"TRUEVISION-XFILE.\0")
                self.assertEqual(file.read_bytes()[-27], 3 if samples == 4 else 0)
                colours = self.tool("tgatoppm", "--alphaout=alpha.pgm", file)
                self.assertTrue(colours.endswith(without_samples(expected, samples, 3, 4)))
                if samples == 4:
                    alpha = without_samples(expected, 4, 0, 3)
                    self.assertTrue((self.folder / "alpha.pgm").read_bytes().endswith(alpha))
        dots_per_centimetre = self.tool("gm", "identify", "-format", "%x,%y",
                                        self.write_patch("PngWriter", 0, 3, 8)).decode()
        self.assertEqual(dots_per_centimetre, "47.24,70.87\n")

    def test_pict_holds_planes_of_packed_rows(self):
        flat = [9] * (WIDTH * 3 - 1)  # with runs as well
        for samples, pixels in ((3, soft_patch(3, 8)), (4, soft_patch(4, 8)),
                                (3, (flat + [7]) * HEIGHT)):
            file = self.write("PictWriter", 0, (WIDTH, HEIGHT), samples, pixels)
            expected = straight(pixels, samples, 8)
            for program in ("gm convert", "convert-im6.q16"):
                read = self.tool(*program.split(), file, "-depth", 8, "rgb:-")
                self.assertEqual(read, without_samples(bytes(expected), samples, 3, 4), program)
        # those programs leave alpha out, which comes first in a row of runs and bytes
        data = self.write_patch("PictWriter", 0, 4, 8).read_bytes()
        self.assertEqual((data[:512], data[-2:]), (bytes(512), b"\0\xff"))
        row = data[data.index(b"\0\x9a\0\0\0\xff") + 70:]
        self.assertEqual(list(row[3:3 + WIDTH]), [x * 255 // (WIDTH - 1) for x in range(WIDTH)])

    def test_cineon_holds_the_logarithm_of_the_levels(self):
        black = 10 ** ((95 - 685) / 300)
        codes = [*range(95, 686)] + [685] * 9
        levels = [round(65535 * (10 ** ((code - 685) / 300) - black) / (1 - black))
                  for code in codes]
        pixels = [v for x in range(600) for v in (levels[x], levels[-x], 0)]
        for variant, name, pitch in (
                (0, "Academy", 166.667), (1, "Academy", 83.3333), (2, "Cinemascope", 166.667),
                (3, "Cinemascope", 83.3333), (4, "Full aperture", 166.667),
                (5, "Full aperture", 83.3333), (6, "VistaVision", 166.667),
                (7, "VistaVision", 83.3333)):
            file = self.write("CinesiteWriter", variant, (60, 10), 3, pixels, bits=16)
            told = self.tool("gm", "identify", "-verbose", file).decode()
            self.assertIn(f"DPX:mp.format: {name}\n", told)
            self.assertIn(f"DPX:source.device.pitch.x: {pitch}\n", told)
            read = self.tool("gm", "convert", file, "-depth", 16, "-endian", "msb", "rgb:-")
            found = [round(685 + 300 * math.log10(black + (1 - black) * v / 65535))
                     for v in struct.unpack(">1800H", read)]
            self.assertEqual(found[0::3], codes)
            self.assertEqual(found[1::3], [codes[-x] for x in range(600)])
            self.assertEqual(set(found[2::3]), {95})
        self.assertEqual(self.try_to_write("CinesiteWriter", 8, (60, 10), 3, pixels, bits=16),
                         NO_WRITER)

    def test_yuv_is_read_as_it_was_drawn(self):
        for variant, height in ((0, 576), (1, 486)):
            pixels = [v for y in range(height) for x in range(720)
                      for v in (x * 255 // 719, y * 255 // height, 255 - (x + y) // 6)]
            file = self.write("YUVWriter", variant, (720, height), 3, pixels)
            self.assertEqual(file.stat().st_size, 720 * height * 2)
            read = self.tool("yuvtoppm", 720, height, file)[-len(pixels):]
            self.assertLessEqual(max(abs(a - b) for a, b in zip(read, pixels)), 2)

    def test_colour_is_shared_from_the_first_pixel_of_a_pair(self):
        row = [255, 0, 0] * 360 + [0, 0, 255] * 360
        u = self.write("YUVWriter", 0, (720, 576), 3, row * 576).read_bytes()[:1440:4]
        red, blue = 90, 240
        self.assertEqual((u[0], u[178], u[-1]), (red, red, blue))
        self.assertAlmostEqual(u[180], 0.25 * red + 0.75 * blue, delta=1)

    def test_yiq_has_the_matrix_that_imagemagick_knows(self):
        levels = range(30, 226, 65)
        colours = [(r, g, b) for r in levels for g in levels for b in levels]
        row = [v for colour in colours for v in colour * 11] + [0] * 48
        data = self.write("YIQWriter", 1, (720, 486), 3, row * 486).read_bytes()
        (self.folder / "colours").write_bytes(bytes(sum(colours, ())))
        told = self.tool("convert-im6.q16", "-size", "64x1", "-depth", 8, "rgb:colours",
                         "-colorspace", "YIQ", "txt:-").decode()
        found = re.findall(r"yiq\(([^)]*)\)", told)
        self.assertEqual(len(found), len(colours))
        for index, text in enumerate(found):
            luma, i, q = (float(v) / 255 for v in text.split(","))
            expected = (128 + 224 * (i - 0.5) / 2 / 0.595716, 16 + 219 * luma,
                        128 + 224 * (q - 0.5) / 2 / 0.522591)
            middle = 2 * (index * 11 + 4 + index % 2)  # the first pixel of a pair, far from edges
            for ours, theirs in zip(data[middle:middle + 3], expected):
                self.assertAlmostEqual(ours, theirs, delta=0.6)

    def test_television_fits_other_sizes_into_its_frame(self):
        # 2 by 1 on the screen, since the test program says 1.5 for the pixels
        file = self.write("YUVWriter", 0, (400, 300), 4, [255, 255, 255, 255] * 120000)
        lumas = file.read_bytes()[721::1440]  # down the middle
        self.assertEqual([lumas[y] for y in (0, 95, 97, 288, 478, 480, 575)],
                         [16, 16, 235, 235, 235, 16, 16])

    def test_a_failure_leaves_what_was_there(self):
        for writer, extension in EXTENSIONS.items():
            final = self.folder / f"a.{extension}"
            final.write_text("old")
            before = sorted(self.folder.iterdir())

            def expect(error, size=(WIDTH, HEIGHT), writer=writer, **more):
                pixels = soft_patch(3, 8) if size == (WIDTH, HEIGHT) else [0] * (
                    size[0] * size[1] * 3)
                self.assertEqual(self.try_to_write(writer, 0, size, 3, pixels, **more), error)

            expect(NO_ROOM, preexec_fn=limit_files, restore_signals=False)
            expect(CANNOT_OPEN, name="none/a")
            expect(NO_PIXELS, (0, 0))
            if writer in ("TargaWriter", "PictWriter"):
                expect(WRONG_SIZE, (65536, 1))
            if writer == "PictWriter":
                expect(WRONG_SIZE, (1, 1))
            self.assertEqual(final.read_text(), "old")
            self.assertEqual(set(self.folder.iterdir()) - set(before) - {self.folder / "pixels"},
                             set())
            final.unlink()
            final.mkdir()
            expect(CANNOT_RENAME)
            self.assertEqual(list(self.folder.glob("*~")), [])
            expect(0, name="a.frame")  # an extension of its own is kept
            self.assertTrue((self.folder / "a.frame").stat().st_size > 200)


if __name__ == "__main__":
    unittest.main()
