#!/usr/bin/env python3
"""The layer check sees a wrong include, and lets a right one and an allowed one pass."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
import check_layers  # noqa: E402


class CheckLayers(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name)
        self.write("docs/layers.txt", "low\nsheet/*\nhigh left\n"
                                      "allow sheet/a/src/B.cpp -> high/hdr/A.h\n")
        self.write("low/hdr/A.h", "")
        self.write("high/hdr/A.h", '#include "low/hdr/A.h"\n#include <vector>\n')
        self.write("sheet/a/hdr/A.h", '#include "low/hdr/A.h"\n')
        self.write("sheet/b/src/B.cpp", '#include "sheet/a/hdr/A.h"\n')
        self.write("sheet/a/src/B.cpp", '#include "high/hdr/A.h"\n')

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def test_right_and_allowed_includes_pass(self):
        self.assertEqual(check_layers.check(self.root), [])

    def test_wrong_includes_are_named(self):
        self.write("low/src/A.cpp", '#include "sheet/a/hdr/A.h"\n')
        self.write("left/src/A.cpp", '#include "high/hdr/A.h"\n')
        self.write("high/hdr/B.h", "#include <tiffio.h>\n")
        self.assertEqual(check_layers.check(self.root), [
            "high/hdr/B.h: a public header includes tiffio.h",
            "left/src/A.cpp: may not include high/hdr/A.h",
            "low/src/A.cpp: may not include sheet/a/hdr/A.h"])


if __name__ == "__main__":
    unittest.main()
