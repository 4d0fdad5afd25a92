#!/usr/bin/env python3
"""The programs from outside: scenes from descriptions, result codes with their words, and a frame
that ImageMagick composes too.

    command_line_test.py BIN_FOLDER
"""

import re
import sys
import unittest

from programs import InFolder, card, convert, images, output, psnr, run


def pixel(image, x, y):
    """Red, green, blue and alpha from 0 to 255."""
    text = convert(image, "-depth", "8", "-crop", f"1x1+{x}+{y}", "txt:-")
    samples = [float(n) for n in re.search(r"\(([^)]*)\)", text.splitlines()[1])
               .group(1).split(",")]
    return [round(n) for n in samples]


class ResultCodes(InFolder):
    def expect(self, code, words, *arguments):
        result = run("CMontaray", *arguments, cwd=self.folder)
        self.assertEqual((result.returncode, result.stdout), (code, words))

    def test_runs_that_end_early(self):
        scene = self.make_scene([output("card"), card("card", 1, 0, 0)])
        self.expect(1, "No output directory specified.\n", "image", scene)
        (self.folder / "file").write_text("")
        below_a_file = self.folder / "file" / "frames"
        self.expect(1, f"Failed to create output directory: {below_a_file}\n",
                    "image", "-o", below_a_file, scene)
        self.expect(205, "Failed to load scene 'none'.\n", "image", "-o", "frames", "none")
        for wrong_range in ("3-2", "2-9"):
            self.expect(206, "Invalid range - output aborted.\n",
                        "image", "-o", "frames", wrong_range, scene)
        self.expect(206, "", "image", "-silent", "-o", "frames", "3-2", scene)
        self.expect(1, "", "image", "-silent", "-no_output", "-o", "frames", scene)
        self.assertEqual(list((self.folder / "frames").iterdir()), [])


class Frames(InFolder):
    def test_the_run_tells_what_it_does(self):
        scene = self.make_scene([output("card"), card("card", 1, 0, 0)])
        result, frames = self.render(scene, "-width", 96, "2-3")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stdout, f"""Outputting from frame 2 to frame 3
Output type: Rendered Frames
Options: 
Width: 96.  
Height: 72.  
Pixel aspect ratio: 1.  
Color Profile: none
Rendering with 8 bits per channel.
Output directory: {frames}
File type: tiff compressed
Rendering frame 2
Rendering frame 3
""")
        self.assertEqual(sorted(file.name for file in frames.iterdir()), ["0002.tif", "0003.tif"])

    def test_options_are_told(self):
        scene = self.make_scene([output("card"), card("card", 1, 0, 0)], length=1)
        for options, lines in (
                (["-alias", "-transparent"], "Options: Aliased.  Transparent.  \n"),
                (["-low_quality_ink_paint"], "Options: \nLower quality Ink & Paint.\nWidth: "),
                (["-gamma", "2"], "Color Profile: none\nGamma: 2\nRendering with 16 bits per"),
                (["-gamma", "0.09"], "Color Profile: none\nRendering with 8 bits per channel.\n"),
                (["-tiff16"], "Rendering with 16 bits per channel.\n"),
                (["-tv", "-interlace"], "none\nTV filter enabled (interlace flicker removal).\n"
                 "TV interlace enabled (for smooth movement).\nRendering with 8"),
                (["-width", "100"], "Height: 75.  \n"), (["-height", "75"], "Width: 100.  \n"),
                (["-par", "2", "-width", "100"], "Height: 150.  \nPixel aspect ratio: 2.  \n"),
                (["-height", "5", "-par", "2"], "Width: 3.  \n"),  # 3.33
                *((["-tv", kind], "-tv ignored - automatic for YUV or YIQ.\nRendering with 8")
                  for kind in ("-yuv625", "-yuv525", "-yiq625", "-yiq525")),
                *(([kind], f"\nFile type: {told}\nRendering frame 1\n") for kind, told in (
                    ("-tiff", "tiff compressed"), ("-tiffuncompressed", "tiff not compressed"),
                    ("-tga", "TGA"), ("-yuv625", "YUV 625"), ("-yuv525", "YUV 525"),
                    ("-yiq625", "YIQ 625"), ("-yiq525", "YIQ 525"), ("-pict", "PICT"),
                    ("-tiff16", "tiff 16bps"), ("-cineon_full", "Cineon full"),
                    ("-cineon_half", "Cineon half"), ("-no_output", "No frames will be output")))):
            self.assertIn(lines, self.render(scene, *options)[0].stdout, options)

    def test_a_silent_run_filters_what_it_would_not_otherwise(self):
        line = self.folder / "line.png"
        convert("-size", "720x540", "xc:black", "-fill", "white", "-draw", "rectangle 0,270 719,271",
                line)
        scene = self.make_scene([output("line"), images("line", line)], length=1)
        def filtered(*options):
            _, frames = self.render(scene, *options, "-yuv625", "-pal")
            return (frames / "0001.yuv").read_bytes()
        self.assertEqual(filtered("-tv"), filtered())
        self.assertNotEqual(filtered("-tv", "-silent"), filtered("-silent"))

    def test_layers_stand_in_their_order_and_hold_between_keys(self):
        half, whole = self.folder / "half.png", self.folder / "whole.png"
        convert("-size", "360x540", "xc:#00ff0080", half)
        convert("-size", "720x540", "xc:#0000ff", whole)
        first_whole_then_half = images("cel", whole, half)
        scene = self.make_scene([output("cel", "card"), card("card", 1, 0, 0),
                                 first_whole_then_half], length=3)
        result, frames = self.render(scene, "-silent", "-tga", "-width", 72)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(pixel(frames / "0001.tga", 36, 27)[:3], [0, 0, 255])
        for frame in ("0002.tga", "0003.tga"):
            red, green, blue = pixel(frames / frame, 36, 27)[:3]
            self.assertTrue(126 <= red <= 128 and 127 <= green <= 129 and blue == 0)
            self.assertEqual(pixel(frames / frame, 2, 27)[:3], [255, 0, 0])

    def test_a_transparent_frame_keeps_its_alpha(self):
        spot = self.folder / "spot.png"
        convert("-size", "360x270", "xc:#ff000080", spot)
        scene = self.make_scene([output("spot"), images("spot", spot)], length=1)
        result, frames = self.render(scene, "-silent", "-transparent", "-tga", "-width", 72)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(pixel(frames / "0001.tga", 36, 27), [255, 0, 0, 128])
        self.assertEqual(pixel(frames / "0001.tga", 2, 2)[3], 0)

    def test_fields_are_woven_and_a_missing_half_is_no_frame(self):
        keys = [{"frame": 1, "value": [0, 0, 0]}, {"frame": 2, "value": [1, 1, 1]}]
        scene = self.make_scene([output("card"), {"name": "card", "type": "Color Card",
                                                  "columns": {"Color": keys}}], length=2)
        result, frames = self.render(scene, "-interlace", "-tga", "-width", 8, "1")
        self.assertEqual(result.returncode, 0)
        self.assertIn("Rendering frame 1\nRendering interlace frame 1.5\n", result.stdout)
        greys = [pixel(frames / "0001.tga", 3, y)[0] for y in range(4)]
        self.assertEqual(greys, [0, 128, 0, 128])
        self.render(scene, "-silent", "-interlace", "-yuv525", "-ntsc", "1")
        lumas = (frames / "0001.yuv").read_bytes()[1::1440]
        self.assertEqual(list(lumas[:4]), [126, 16, 126, 16])  # the lower field comes first

    def test_each_type_of_file_reaches_its_writer(self):
        scene = self.make_scene([output("card"), card("card", 0.2, 0.4, 0.6)], length=1)
        film = b"Full aperture"
        for options, name, size, places in (
                (["-tiff"], "tif", None, {}), (["-tiffuncompressed"], "tif", 36864, {}),
                (["-tiff16"], "tif", 73728, {}), (["-gamma", "2"], "tif", None, {}),
                (["-tga"], "tga", 36864, {16: b"\x18"}),
                (["-pict"], "pict", None, {522: b"\0\x11"}),
                (["-gamma", "2", "-tga"], "tga", 36864, {16: b"\x18"}),
                (["-yuv625"], "yuv", 829440, {}), (["-yuv525"], "yuv", 699840, {}),
                (["-yiq625"], "yiq", 829440, {}), (["-yiq525"], "yiq", 699840, {}),
                (["-cineon_full"], "cin", 2048 + 4 * 12288, {1036: b"Academy", 972: b"C&"}),
                (["-fullaperture_cineon", "-cineon_half"], "cin", 2048 + 4 * 2048 * 1556,
                 {1036: film, 972: b"B\xa6"})):
            result, frames = self.render(scene, "-silent", "-width", 128, *options)
            self.assertEqual(result.returncode, 0, options)
            data = (frames / f"0001.{name}").read_bytes()
            if size:
                self.assertTrue(size <= len(data) < size + 600, (options, len(data)))
            for at, words in places.items():
                self.assertTrue(data[at:].startswith(words), (options, at))
            (frames / f"0001.{name}").unlink()

    def test_imagemagick_composes_the_same_frame(self):
        back, cel = self.folder / "back.png", self.folder / "cel.png"
        convert("-size", "720x540", "gradient:#203050-#e0a060", back)
        convert("-size", "200x160", "gradient:#ff4020-#40ff80", "-alpha", "set", "-channel", "A",
                "-evaluate", "set", "75%", "+channel", cel)
        key = {"frame": 1}
        scene = self.make_scene([
            output("moved", "back"), images("back", back), images("cel", cel),
            {"name": "moved", "type": "Transform", "inputs": ["cel"], "columns": {
                "Move": {"x": [{**key, "value": 60}], "y": [{**key, "value": -40}]},
                "Angle": [{**key, "value": 30}], "Scale": [{**key, "value": 1.5}]}}], length=1)
        result, frames = self.render(scene, "-silent", "-width", 720)
        self.assertEqual(result.returncode, 0)

        # 30 degrees counter-clockwise, about the middle of the cel, which lands at (420, 310)
        place = ["-alpha", "set", "-virtual-pixel", "transparent", "-interpolate", "bilinear",
                 "-define", "distort:viewport=720x540+0+0",
                 "-distort", "SRT", "100,80 1.5 -30 420,310"]
        theirs, inside = self.folder / "theirs.png", self.folder / "inside.png"
        convert(back, "(", cel, *place, ")", "-composite", theirs)
        convert(cel, *place, "-alpha", "extract", "-threshold", "0",
                "(", "+clone", "-morphology", "EdgeOut", "Square:1", ")",
                "(", "-clone", "0", "-morphology", "EdgeIn", "Square:2", ")",
                "-delete", "0", "-compose", "plus", "-composite", "-negate", inside)
        both = []
        for name, picture in (("ours", frames / "0001.tif"), ("theirs2", theirs)):
            both.append(self.folder / f"{name}.png")
            convert(picture, "-alpha", "off", inside, "-compose", "multiply", "-composite",
                    both[-1])
        decibels = psnr(*both)
        print(f"PSNR to ImageMagick outside the edge: {decibels:.1f} dB", file=sys.stderr)
        self.assertGreaterEqual(decibels, 45)


class Colours(InFolder):
    def setUp(self):
        super().setUp()
        run("write_profiles", self.folder)

    def test_a_profile_that_is_not_of_colours_ends_the_run(self):
        scene = self.make_scene([output("card"), card("card", 1, 0, 0)])
        for profile, reason in (("grey.icc", "it is not the profile of a device's red, green and "
                                             "blue"), ("none.icc", "No such file or directory")):
            path = self.folder / profile
            result, frames = self.render(scene, "-silent", "-color", path)
            self.assertEqual((result.returncode, result.stdout),
                             (207, "Failed to initialise CMS: Can't use colour profile "
                                   f"{path}: {reason}\n"))
            self.assertFalse(frames.exists())

    def test_pictures_are_brought_to_the_output_profile_once(self):
        orange, swapped, tolerance = [255, 64, 0], [64, 255, 0], 3
        own, grey = ["-profile", self.folder / "swap.icc"], self.folder / "grey.icc"
        cels = [("plain.png", "xc:#ff4000", [], swapped)]
        cels += [(f"own.{ext}", "xc:#ff4000", own, orange) for ext in ("png", "tif", "jpg")]
        cels += [("grey.png", "xc:#404040", ["-colorspace", "Gray", "-profile", grey], 3 * [81])]
        for name, colour, profile, _ in cels:
            convert("-size", "360x540", colour, *profile, self.folder / name)
        scene = self.make_scene([output("cel", "card"), card("card", 1, 0.25, 0),
                                 images("cel", *(self.folder / cel[0] for cel in cels))],
                                length=len(cels))
        profile = self.folder / "swap.icc"
        for option in (["-tiff"], ["-tiff16"], ["--format", "png16"]):
            result, frames = self.render(scene, "-silent", "-width", 72, *option, "-color", profile)
            self.assertEqual(result.returncode, 0)
            [first] = frames.glob("0001.*")
            convert(first, self.folder / "held.icc")
            self.assertEqual((self.folder / "held.icc").read_bytes(), profile.read_bytes())
            for index, (name, _, _, wanted) in enumerate(cels):
                frame = frames / f"{index + 1:04}{first.suffix}"
                for x, colour in ((36, wanted), (2, orange)):
                    for a, b in zip(pixel(frame, x, 27), colour):
                        self.assertLessEqual(abs(a - b), tolerance, (name, option, x))
            first.unlink()
        self.render(scene, "-silent", "-gamma", 2, "-color", profile, 1)
        self.assertNotIn("icc:", convert(frames / "0001.tif", "-verbose", "info:"))


class Descriptions(InFolder):
    def expect_mistake(self, pointer, nodes, **more):
        built = self.build(nodes, **more)
        self.assertEqual(built.returncode, 2)
        self.assertIn(f": {pointer}: ", built.stderr)
        self.assertFalse((self.folder / "scene").exists())

    def test_a_mistake_is_told_with_its_place(self):
        good = card("card", 1, 0, 0)
        self.expect_mistake("/nodes/1/type", [output("card"), {**good, "type": "Colour Crad"}])
        self.expect_mistake("/nodes/0/inputs/0", [output("crad"), good])
        self.expect_mistake("/nodes/0/inputs/0/output",
                            [output({"node": "card", "output": 2}), good])
        self.expect_mistake("/nodes/2/name", [output("card"), good, good])
        self.expect_mistake("/nodes", [good])
        self.expect_mistake("/length", [output("card"), good], length=0)
        self.expect_mistake("/nodes/1/columns/Colour",
                            [output(), {**good, "columns": {"Colour": []}}])
        self.expect_mistake("/cover_sheet/frame_rat", [output()], cover_sheet={"frame_rat": 25})
        self.expect_mistake("/nodes/1/columns/BG~1OL/0/file", [output(), images("a", "none.png")])

    def test_a_key_is_told_with_its_place(self):
        def size(*keys):
            return [output(), {"name": "c", "type": "Camera", "columns": {"Size": list(keys)}}]
        place = "/nodes/1/columns/Size"
        self.expect_mistake(f"{place}/0/value", size({"frame": 1, "value": "wide"}))
        self.expect_mistake(f"{place}/1/frame", size({"frame": 3, "value": 1},
                                                     {"frame": 3, "value": 2}))
        self.expect_mistake(f"{place}/0/mode", size({"frame": 1, "value": 1, "mode": "held"}))
        self.expect_mistake(f"{place}/0/ease", size({"frame": 1, "value": 1, "ease": "in"}))
        self.expect_mistake(f"{place}/0/colour", size({"frame": 1, "value": 1, "colour": 1}))

    def test_a_circle_is_refused(self):
        def move(name, source):
            return {"name": name, "type": "Move", "inputs": [source]}
        self.expect_mistake("/nodes/1/inputs/0", [output("a"), move("a", "b"), move("b", "a")])

    def test_paths_and_columns_to_follow_are_told_with_their_place(self):
        def moves(path, **x):
            keys = [{"frame": 1, "value": 0, **x}]
            return [output("a", "b"), card("card", 1, 0, 0),
                    {"name": "a", "type": "Move", "inputs": ["card"],
                     "columns": {"Move": {"path": path}}},
                    {"name": "b", "type": "Move", "inputs": ["card"],
                     "columns": {"Move": {"x": keys, "y": [{"frame": 1, "value": 0, "follows": {
                         "column": ["b", "Move", "x"]}}]}}}]
        line = [{"at": [0, 0]}, {"at": [30, 40]}]
        place = "/nodes/2/columns/Move/path"
        for keys, wrong in (([{"frame": 1, "knot": 3}], "/keys/0/knot"),
                            ([{"frame": 1, "knot": 1, "distance": 1}], "/keys/0/knot"),
                            ([{"frame": 1, "distance": 50.1}], "/keys/0/distance"),
                            ([{"frame": 1}], "/keys/0")):
            self.expect_mistake(place + wrong, moves({"knots": line, "keys": keys}))
        self.expect_mistake(place + "/knots", moves({"knots": [], "keys": []}))
        path = {"knots": line, "keys": [{"frame": 1, "knot": 2}]}
        place = "/nodes/3/columns/Move/x/0/follows/column"
        for column in (["b", "Move", "x"], ["card", "Color"], ["c", "Move"], ["a"]):
            self.expect_mistake(place, moves(path, follows={"column": column}))
        self.expect_mistake(place.replace("x", "y", 1),
                            moves(path, follows={"column": ["b", "Move", "y"]}))
        scene = self.make_scene(moves(path, follows={"column": ["a", "Move", "path"],
                                                     "ratio": 0.5}))
        self.assertIn("frame 1: 0  hold, follows a - Move - PATH times 0.5\n",
                      run("montaray-scene", "show", scene).stdout)

    def test_links_groups_and_macros_are_built_and_shown(self):
        def nodes(link=None, **more):
            group = {"name": "all", "type": "Group", "inputs": ["there"], "members": ["here"],
                     "folded": True, **more}
            return [output("all"), group, card("card", 1, 0, 0),
                    {"name": "there", "type": "Receive", "inputs": link or ["here"]},
                    {"name": "here", "type": "Transmit", "inputs": ["card"]},
                    {"name": "set", "type": "Macro", "members": ["card", "there"]}]
        linked = nodes(inputs=[{"node": "there", "output": 1}])
        shown = run("montaray-scene", "show", self.make_scene(linked)).stdout
        for line in ("    all  (Group)\n      there  (Receive)  in set\n"
                     "        here  (Transmit)  folded into all\n          card  (Color Card)  in set",
                     "  set  (Macro) of card, there\n", "  there\n    card\n"):
            self.assertIn(line, shown)
        self.folder = self.folder / "mistakes"
        self.folder.mkdir()
        self.expect_mistake("/nodes/3/inputs/0", nodes(link=["card"]))
        self.expect_mistake("/nodes/3/inputs", nodes(link=["here", "card"]))
        self.expect_mistake("/nodes/1/folded", nodes(folded="yes"))
        for member in ("hare", "all", "here"):
            self.expect_mistake("/nodes/1/members/1", nodes(members=["here", member]))
        self.expect_mistake("/nodes/5/members/0", nodes(members=["card"]))
        self.expect_mistake("/nodes/2/members", [output(), card("a", 1, 0, 0),
                                                 {**card("b", 1, 0, 0), "members": ["a"]}])

    def test_a_text_that_makes_no_sense_is_refused(self):
        description = self.folder / "broken.json"
        for text in ('{"length": 3,, }', '{"length": 1e999, "nodes": []}', "[]", "",
                     '{"length": ' + 5000 * "[" + 5000 * "]" + ', "nodes": []}'):
            description.write_text(text)
            built = run("montaray-scene", "build", description, self.folder / "scene")
            self.assertEqual(built.returncode, 2, text[:40])
            self.assertFalse((self.folder / "scene").exists())

    def test_show_prints_graph_and_keys(self):
        picture = self.folder / "cel.png"
        convert("-size", "10x10", "xc:red", picture)
        scene = self.make_scene(
            [output("move", "card"), card("card", 1, 0.5, 0), images("cel", picture),
             {"name": "move", "type": "Move", "inputs": ["cel"], "columns": {"Move": {
                 "x": [{"frame": 1, "value": 5, "ease": "in_out"}, {"frame": 4, "value": 9}]}}}],
            cover_sheet={"director": "A. Person"})
        shown = run("montaray-scene", "show", scene).stdout
        for line in ("4 frames, 24 a second", "director: A. Person",
                     "  Output  (Output)\n    move  (Move)\n      cel  (BG/OL)\n    card",
                     "frame 1: 5  inbetween, eased\n", "frame 1: 1, 0.5, 0", str(picture)):
            self.assertIn(line, shown)
        listed = run("CMontaray", "list_refs", "-1", scene)
        self.assertEqual((listed.returncode, listed.stdout), (0, f"{picture}\n"))
        self.assertEqual(run("CMontaray", "list_refs", self.folder / "none").returncode, 205)

    def test_the_module_for_render_jobs_says_what_is_wrong_with_one(self):
        scene = self.make_scene([output("card"), card("card", 1, 0.5, 0)])
        for options, reason in ((["-tga"], "needs an output folder, behind -o"),
                                (["-o", "x", "5"], "have no range of frames, such as 5"),
                                (["-o", "no/where"], f"write to the output folder {self.folder}")):
            done = run("montaray-scene", "submit", scene, "--", *options, cwd=self.folder)
            self.assertEqual(done.returncode, 1)
            self.assertIn(reason, done.stderr)
        for verb in ("status", "cancel"):
            done = run("montaray-scene", verb, self.folder)
            self.assertEqual((done.returncode, done.stderr),
                             (1, f"{self.folder}: there is no render job\n"))


if __name__ == "__main__":
    unittest.main()
