#!/usr/bin/env python3
"""Modules that are built against the installed package: one that extends it, and what can't.

    outside_module_test.py INSTALLED LIBRARY_FOLDER BUILD_FOLDER [COMPILER FLAGS]
"""

import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
INSTALLED, LIBRARY_FOLDER, BUILD = Path(sys.argv[1]), sys.argv[2], Path(sys.argv[3])
FLAGS = " ".join(sys.argv[4:])
sys.argv[1:] = [str(INSTALLED / "bin")]
sys.path.insert(0, str(HERE.parent / "command_line"))

from programs import InFolder, convert, output, run  # pylint: disable=wrong-import-position

MODULES = INSTALLED / LIBRARY_FOLDER / "montaray" / "modules"
RUNS = "Code of the module runs."


def tone(name, *values):
    keys = [{"frame": 1 + 2 * i, "value": value} for i, value in enumerate(values)]
    return {"name": name, "class": "CNodeTone",
            "columns": {"Tone": keys, "Remark": [{"frame": 2, "text": "as at dusk"}]}}


def through(name, kind, source):
    return {"name": name, "type": kind, "inputs": [source]}


GRAPH = [output("Turned"), through("Turned", "Invert Tone", "Moved"),
         through("Moved", "Transform", "Grey"), tone("Grey", 0.25, 0.75)]


def install(folder, build):
    """As the documents tell a module's author."""
    for step in (["-G", "Ninja", "-S", folder, "-B", build, f"-DCMAKE_PREFIX_PATH={INSTALLED}",
                  "-DCMAKE_BUILD_TYPE=Debug", f"-DCMAKE_CXX_FLAGS={FLAGS}"],
                 ["--build", build], ["--install", build, "--prefix", INSTALLED]):
        subprocess.run(["cmake", *map(str, step)], check=True, stdout=subprocess.DEVNULL)


class OutsideModule(InFolder):
    def setUp(self):
        super().setUp()
        for name in ("tone", "CNodeTone", "CNodeToneInvert"):
            self.assertTrue((MODULES / f"{name}.so").is_file())

    def without_module(self):
        hidden = MODULES.with_name("hidden")
        MODULES.rename(hidden)
        self.addCleanup(hidden.rename, MODULES)

    def test_its_nodes_data_and_conversion_make_a_frame(self):
        scene = self.make_scene(GRAPH, length=3)
        result, frames = self.render(scene, "-silent", "-tga", "-width", 8)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        greys = [convert(frames / f"000{n}.tga", "-depth", "8", "-format", "%[pixel:p{3,3}]",
                         "info:") for n in (1, 2, 3)]
        self.assertEqual([round(255 * (1 - t)) for t in (0.25, 0.5, 0.75)],
                         [int(re.search(r"\d+", grey).group()) for grey in greys])
        result, _ = self.render(scene, "-silent", "-16bit", "-width", 8, "1")
        self.assertEqual(result.returncode, 0)

        shown = run("montaray-scene", "show", scene)
        self.assertEqual(shown.returncode, 0)
        for words in ("Turned  (Invert Tone)", "Grey  (Tone)", "frame 3: 0.75", "frame 2: as at dusk"):
            self.assertIn(words, shown.stdout)
        checked = run("montaray-scene", "check", scene)
        self.assertEqual((checked.returncode, checked.stdout), (0, ""))
        self.assertEqual(run("CMontaray", "list_refs", scene).returncode, 0)
        usage = (scene / "DLLUsage").read_bytes()
        for name in (b"CNodeTone", b"CNodeToneInvert", b"CNodeTransform"):
            self.assertIn(name, usage)

    def test_its_data_go_only_where_it_says(self):
        scene = self.make_scene([output("Grey"), tone("Grey", 0.5)], name="direct")
        result, _ = self.render(scene, "-silent", "-width", 8, "1")
        self.assertEqual(result.returncode, 0)
        refused = self.build([output("Turned"), through("Turned", "Invert Tone", "Card"),
                              {"name": "Card", "type": "Color Card"}], name="wrong")
        self.assertEqual(refused.returncode, 2)
        self.assertIn("inputs whose data fit together", refused.stderr)

    def test_without_it_a_load_names_its_classes(self):
        scene = self.make_scene(GRAPH)
        self.without_module()
        words = "CNodeToneInvert of version"
        result, _ = self.render(scene, "-silent")
        self.assertEqual(result.returncode, 205)
        self.assertIn(words, result.stdout + result.stderr)
        checked = run("montaray-scene", "check", scene)
        self.assertEqual(checked.returncode, 1)
        self.assertIn(words, checked.stdout)
        self.assertIn("the class CNodeTone is not installed", checked.stdout)


class FaultyModules(InFolder):
    @classmethod
    def setUpClass(cls):
        good = set(MODULES.iterdir())
        install(HERE / "faulty", BUILD / "faulty")
        for faulty in set(MODULES.iterdir()) - good:
            cls.addClassCleanup(faulty.unlink)

    def fault_of(self, name, member="class"):
        built = self.build([{"name": "Node", member: name}])
        self.assertEqual(built.returncode, 2)
        return built.stdout + built.stderr

    def test_are_refused_with_their_reason(self):
        for name, reason, may_run in (
                ("CNodeStray", "is no module", False),
                ("CNodeMarred", "is no module", False),
                ("CNodeNewer", "was built for release 9.0, and this is", False),
                ("CNodeNextMinor", "was built for release 0.99, and this is", False),
                ("CNodeLost", "undefined symbol", False),
                ("CNodeMute", "has no initialiser", True),
                ("CNodeThrows", "its initialiser failed: no tape", True),
                ("CNodeUntyped", "registers the class CNodeUntyped without its type", True),
                ("CNodeOther", "does not bring the class CNodeOther", True)):
            words = self.fault_of(name)
            self.assertIn(reason, words)
            self.assertIn(f"{name}.so", words)
            self.assertEqual(RUNS in words, may_run, name)
        all_words = self.fault_of("No Such Kind", "type")
        for reason in ("9.0", "undefined symbol", "no tape"):
            self.assertEqual(all_words.count(reason), 1)

    def test_a_scene_tells_what_is_wrong_with_the_module_that_it_needs(self):
        scene = self.make_scene([output("Grey"), tone("Grey", 0.5)])
        good, kept = MODULES / "tone.so", MODULES / "tone.kept"
        good.rename(kept)
        self.addCleanup(kept.rename, good)
        shutil.copy(MODULES / "CNodeNewer.so", good)
        result, _ = self.render(scene, "-silent")
        self.assertEqual(result.returncode, 205)
        self.assertRegex(result.stdout + result.stderr,
                         r"CNodeTone of version \d+ \(.*tone.so: was built for release 9.0")

    def test_nothing_outside_the_folder_is_loaded(self):
        outside = MODULES.parent / "CNodeMute.so"
        below = MODULES / "below"
        below.mkdir(exist_ok=True)
        shutil.copy(MODULES / "CNodeMute.so", outside)
        shutil.copy(outside, below)
        self.addCleanup(shutil.rmtree, below)
        link = MODULES / "CNodeLink.so"
        link.symlink_to(outside)
        self.addCleanup(link.unlink)
        absolute = str(outside.with_suffix(""))
        for name in ("../CNodeMute", "below/CNodeMute", absolute, "./CNodeMute", "CNodeMute\0x",
                     "CNodeMute.so", "", ".", "x" * 5000, "CNode\u00e4", "%n"):
            self.assertNotIn(RUNS, self.fault_of(name), name)
        self.assertIn("CNodeLink.so: leads out of the module folder", self.fault_of("CNodeLink"))
        self.assertNotIn(RUNS, self.fault_of("CNodeLink"))


class Document(unittest.TestCase):
    def test_shows_the_example_as_it_is(self):
        example = {"cpp": (HERE / "tone.cpp").read_text(),
                   "cmake": (HERE / "CMakeLists.txt").read_text()}
        shown = re.findall(r"```(cpp|cmake)\n(.*?)```", (HERE.parents[1] / "docs" / "modules.md")
                           .read_text(), re.DOTALL)
        self.assertEqual(len(shown), 5)
        for language, code in shown:
            self.assertIn(code, example[language])


if __name__ == "__main__":
    shutil.rmtree(BUILD, ignore_errors=True)
    install(HERE, BUILD / "tone")
    unittest.main()
