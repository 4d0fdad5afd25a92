#!/usr/bin/env python3
"""The effects of the shipped module beside ImageMagick's, rendered by the programs.

    effects_test.py BIN_FOLDER
"""

import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "command_line"))

from programs import InFolder, convert, images, output, psnr  # pylint: disable=wrong-import-position

WIDTH, HEIGHT = 720, 540
CEL = ["-size", "200x160", "xc:none", "-fill", "#e04020", "-draw", "circle 100,80 100,20",
       "-fill", "#2040c0", "-draw", "rectangle 0,100 80,159",
       "-fill", "#20c04080", "-draw", "polygon 120,20 190,20 190,120"]
DEPTHS = {8: "-tiff", 16: "-tiff16"}


def node(name, kind, *inputs, **columns):
    keys = {column.replace("_", " "): value if isinstance(value, (dict, list))
            else [{"frame": 1, "value": value}] for column, value in columns.items()}
    return {"name": name, "class": kind, "inputs": list(inputs), "columns": keys}


class Effects(InFolder):
    def setUp(self):
        super().setUp()
        self.cel = self.folder / "cel.png"
        convert(*CEL, self.cel)

    def frames(self, name, nodes, top, *options, length=1):
        """The files of the frames of a scene, with alpha."""
        scene = self.make_scene([output(top), *nodes], length=length, name=name)
        result, frames = self.render(scene, "-silent", "-transparent", "-width", WIDTH,
                                     *options)
        self.assertEqual((result.returncode, result.stdout), (0, ""))
        kept = self.folder / f"frames of {name}"
        frames.rename(kept)
        return sorted(kept.iterdir())

    def expect_alike(self, ours, theirs, decibels, *change):
        """Over black and over white, so that alpha counts as the colours do, and with a change to
        the other picture there."""
        for ground in "black", "white":
            flat = []
            for file, then in (ours, ()), (theirs, change):
                flat.append(self.folder / f"{len(flat)}.png")
                convert(file, "-background", ground, "-flatten", "-alpha", "off", *then, flat[-1])
            self.assertGreaterEqual(psnr(*flat), decibels, (ours, ground))

    def zoomed(self, zoom, *nodes):
        return [node("Camera", "CNodeCamera", nodes[0]["name"], Size=WIDTH / zoom), *nodes]

    def test_a_blur_is_that_of_imagemagick_at_every_zoom_and_depth(self):
        for depth, file_type in DEPTHS.items():
            for zoom in 0.5, 1, 2:
                for radius in 4, 30:
                    name = f"{depth}, {zoom}, {radius}"
                    keys = [{"frame": 1, "value": 0, "mode": "hold"}, {"frame": 2, "value": radius}]
                    cel = images("cel", self.cel)
                    sharp, = self.frames(f"sharp {name}", self.zoomed(zoom, cel), "Camera",
                                         file_type)
                    blur = node("blur", "CNodeGaussianBlur", "cel", Radius=keys)
                    first, second = self.frames(f"blurred {name}", self.zoomed(zoom, blur, cel),
                                                "Camera", file_type, length=2)
                    self.assertEqual(first.read_bytes(), sharp.read_bytes())
                    self.expect_alike(second, sharp, 50, "-blur", f"0x{radius * zoom / 2}")

    def test_a_blur_reads_what_lies_outside_of_the_frame(self):
        blur = node("blur", "CNodeGaussianBlur", "cel", Radius=24)
        middle, = self.frames("middle", [blur, images("cel", self.cel)], "blur")
        moved = node("move", "CNodeTranslate", "blur", Move={"x": [{"frame": 1, "value": -360}]})
        aside, = self.frames("aside", [moved, blur, images("cel", self.cel)], "move")
        there = self.folder / "there.tif"
        convert(middle, "-background", "none", "-extent", f"{WIDTH}x{HEIGHT}+360+0", there)
        self.expect_alike(aside, there, 60)

    def test_a_matte_is_that_of_imagemagick(self):
        back = self.folder / "back.png"
        convert("-size", "300x120", "gradient:#ffe080-#204060", back)
        sources = [images("back", back), images("cel", self.cel)]
        for depth, file_type in DEPTHS.items():
            apart = {}
            for source in "back", "cel":
                apart[source], = self.frames(f"{source} {depth}", sources, source, file_type)
            for invert, compose in (0, "DstIn"), (1, "DstOut"):
                matte = node("matte", "CNodeMatte", Invert=invert, Strength=1)
                matte["inputs"] = [["back"], ["cel"]]
                ours, = self.frames(f"{compose} {depth}", [matte, *sources], "matte", file_type)
                theirs = self.folder / "theirs.tif"
                convert(apart["back"], apart["cel"], "-compose", compose, "-composite", theirs)
                self.expect_alike(ours, theirs, 55)
            matte["inputs"] = [["back"], []]
            open_matte, = self.frames(f"open {depth}", [matte, *sources], "matte", file_type)
            self.assertEqual(open_matte.read_bytes(), apart["back"].read_bytes())

    def test_levels_are_those_of_imagemagick(self):
        values = {"In_Black": 0.1, "In_White": 0.8, "Gamma": 1.7, "Out_Black": 0.05,
                  "Out_White": 0.9}
        for depth, file_type in DEPTHS.items():
            cel = images("cel", self.cel)
            plain, = self.frames(f"plain {depth}", [cel], "cel", file_type)
            same, = self.frames(f"same {depth}", [node("levels", "CNodeLevels", "cel"), cel],
                                "levels", file_type)
            self.assertEqual(same.read_bytes(), plain.read_bytes())
            ours, = self.frames(f"changed {depth}", [node("levels", "CNodeLevels", "cel", **values),
                                                     cel], "levels", file_type)
            theirs = self.folder / "theirs.tif"
            convert(plain, "-channel", "RGB", "-level", "10%,80%,1.7", "+level", "5%,90%", theirs)
            self.expect_alike(ours, theirs, 50)


if __name__ == "__main__":
    unittest.main()
