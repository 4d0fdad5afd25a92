"""The programs of the bin folder that is the first argument, and scenes to try them on."""

import json
import math
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BIN = Path(sys.argv.pop(1)).resolve()
LONG_ENOUGH = 120  # seconds


def run(program, *arguments, cwd=None):
    return subprocess.run([BIN / program, *map(str, arguments)], capture_output=True, text=True,
                          cwd=cwd, timeout=LONG_ENOUGH, check=False)


def convert(*arguments):
    return subprocess.run(["convert", *map(str, arguments)], check=True, capture_output=True,
                          text=True).stdout


def psnr(a, b):
    """In dB between two images; infinite for equal ones."""
    words = subprocess.run(["compare", "-metric", "PSNR", a, b, "null:"], check=False,
                           capture_output=True, text=True).stderr
    number = re.match(r"[\d.]+|inf", words).group()
    return math.inf if number in ("inf", "0") else float(number)


def card(name, red, green, blue):
    return {"name": name, "type": "Color Card",
            "columns": {"Color": [{"frame": 1, "value": [red, green, blue]}]}}


def images(name, *files):
    keys = [{"frame": index + 1, "file": str(file)} for index, file in enumerate(files)]
    return {"name": name, "type": "BG/OL", "columns": {"BG/OL": keys}}


def output(*inputs):
    return {"name": "Output", "class": "CNodeRostrum", "inputs": list(inputs)}


class InFolder(unittest.TestCase):
    def setUp(self):
        self.keeper = tempfile.TemporaryDirectory()
        self.folder = Path(self.keeper.name)

    def tearDown(self):
        self.keeper.cleanup()

    def build(self, nodes, length=4, name="scene", **more):
        description = self.folder / f"{name}.json"
        description.write_text(json.dumps({"length": length, "nodes": nodes, **more}))
        return run("montaray-scene", "build", description, self.folder / name)

    def make_scene(self, nodes, **more):
        built = self.build(nodes, **more)
        self.assertEqual((built.returncode, built.stderr), (0, ""))
        return self.folder / more.get("name", "scene")

    def render(self, scene, *options):
        frames = self.folder / "frames"
        return run("CMontaray", "image", *options, "-o", frames, scene), frames
