#!/usr/bin/env python3
"""The options of CMontaray that begin with two hyphens.

    options_test.py BIN_FOLDER
"""

import json
import os
import shutil
import signal
import subprocess
import time
import unittest
from pathlib import Path

from programs import BIN, LONG_ENOUGH, InFolder, card, convert, images, output, run

BAD_LISTS = ("", "0", "3-1", "1,", ",1", "1--2", "1-x2", "1-4x0", "1-4x", "a", "-3", "1 2",
             "99999999999")
USAGE_MISTAKES = (["--frame", "1"], ["--jobs"], ["--jobs", "0"], ["--jobs", "2x"], ["--clamp=1"],
                  ["--format", "gif"], ["--tiff-compression", "zip"],
                  ["--log-jsonl", "/none/log"], ["--log-jsonl="], ["--check"])

# options, exit code, frames that have files; of a scene of 4 frames
RUNS = (
    ([], 0, [1, 2, 3, 4]),
    (["--frames", "4,1-3x2,1"], 0, [1, 3, 4]),
    (["--frames=2"], 0, [2]),
    (["--frames", "3-5"], 206, []),
    (["--frames", "3-4x9"], 0, [3]),
    (["--frames", "3-2000000000", "--clamp"], 0, [3, 4]),
    (["--frames", "5", "--clamp"], 206, []),
    (["--clamp", "3-9"], 0, [3, 4]),
    (["--clamp", "5-9"], 206, []),
    (["3-9"], 206, []),
    (["--dry-run"], 0, []),
    (["-no_output"], 1, []),
    (["-no_output", "--dry-run"], 1, []),
    (["--strict", "-width", "1000000", "-height", "1000000", "2"], 221, []),
    (["-width", "1000000", "-height", "1000000", "2"], 0, []),
)


def events_of(log):
    return [json.loads(line) for line in log.read_text().splitlines()]


def wait_until(condition):
    end = time.monotonic() + LONG_ENOUGH
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError
        time.sleep(0.002)


class Options(InFolder):
    def setUp(self):
        super().setUp()
        self.frames = self.folder / "frames"
        self.art = self.folder / "art.png"
        convert("-size", "40x30", "gradient:red-blue", self.art)
        os.utime(self.art, (1, 1))  # what is quite new is not believed to stay
        keys = [{"frame": 1, "value": [0, 0, 0]}, {"frame": 4, "value": [1, 1, 1]}]
        self.scene = self.make_scene([output("art", "card"), images("art", self.art),
                                      {"name": "card", "type": "Color Card",
                                       "columns": {"Color": keys}}])

    def image(self, *options, scene=None, width=64):
        return run("CMontaray", "image", "-width", width, "-o", self.frames, *options,
                   scene or self.scene)

    def files(self):
        return {path.name: path.read_bytes() for path in self.frames.glob("*")}

    def clear(self):
        for path in self.frames.glob("*"):
            path.unlink()

    def test_a_run_by_one_process_and_by_several_is_the_same(self):
        for options, code, frames in RUNS:
            seen = []
            for jobs in (1, 2, 5):
                done = self.image(*options, "--jobs", jobs)
                seen.append((done.returncode, done.stdout, self.files()))
                self.clear()
            self.assertEqual(seen[0][0], code, options)
            self.assertEqual(sorted(seen[0][2]), [f"{n:04}.tif" for n in frames], options)
            self.assertEqual(seen[1], seen[0], options)
            self.assertEqual(seen[2], seen[0], options)

    def test_mistakes_are_told_before_anything_is_done(self):
        for words, code in [(["--frames", text], 220) for text in BAD_LISTS] + \
                           [(words, 204) for words in USAGE_MISTAKES]:
            done = self.image(*words)
            self.assertEqual((done.returncode, done.stdout), (code, ""), words)
            self.assertRegex(done.stderr, r"\ACMontaray: .*\.\n\Z")
        self.assertFalse(self.frames.exists())
        for words, says in (("--help", "--frames LIST"), ("--version", "CMontaray 0.")):
            done = run("CMontaray", words)
            self.assertEqual((done.returncode, says in done.stdout), (0, True))
        self.assertEqual(run("CMontaray", "image", "--", "--x").returncode, 1)

    def test_what_can_not_be_written_ends_the_run_at_one_place(self):
        for jobs, later in ((1, {}), (3, {}), (1, {"0004.tif": b"old"}), (3, {"0004.tif": b"old"})):
            (self.frames / "0003.tif").mkdir(parents=True)
            for name, contents in later.items():
                (self.frames / name).write_bytes(contents)
            self.assertEqual(self.image("--jobs", jobs).returncode, 215)
            (self.frames / "0003.tif").rmdir()
            files = self.files()
            self.assertEqual({*files}, {"0001.tif", "0002.tif", *later})
            self.assertEqual({name: files[name] for name in later}, later)
            self.clear()

    def test_finished_frames_are_left_and_others_made_again(self):
        self.image()
        whole = self.files()
        (self.frames / "0001.tif").write_bytes(whole["0001.tif"][:-100])
        (self.frames / "0002.tif").write_bytes(b"")
        convert("-size", "3x3", "xc:red", self.frames / "0003.tif")
        log = self.folder / "log"
        self.image("--skip-existing", "--log-jsonl", log)
        self.assertEqual(self.files(), whole)
        self.assertEqual([event.get("how") for event in events_of(log)],
                         [None, "written", "written", "written", "left out", None])

    def test_frames_of_another_form_are_made_again(self):
        def how(*options):
            log = self.folder / "log"
            self.image(*options, "--skip-existing", "--log-jsonl", log, "1")
            return events_of(log)[-2]["how"]
        for first, then in ((["-tiff16"], ["-tiff"]), (["-tiffuncompressed"], ["-tiff"]),
                            (["--tiff-compression", "lzw"], ["-tiff"]),
                            (["-transparent"], ["-tiff"]), (["-tiff"], ["-transparent"]),
                            (["-tiff"], ["-tiff16"]),
                            (["--format", "png16"], ["--format", "png"]),
                            (["-width", "80", "-tga"], ["-tga"]),
                            (["-width", "80", "-pict"], ["-pict"]),
                            (["-transparent", "-tga"], ["-tga"]),
                            (["-transparent", "-pict"], ["-pict"]),
                            (["-yuv625"], ["-yuv525"]), (["-yiq525"], ["-yiq625"]),
                            (["-width", "80", "-cineon_full"], ["-cineon_full"])):
            self.image(*first, "1")
            self.assertEqual((how(*then), how(*then)), ("written", "left out"), (first, then))
            [whole] = self.frames.glob("*")
            whole.write_bytes(whole.read_bytes()[:-1])
            self.assertEqual(how(*then), "written", then)
            self.clear()

    def test_held_frames_are_copied_unless_something_may_differ(self):
        keys = [{"frame": frame, "file": str(self.art)} for frame in (1, 4)]
        held = self.make_scene([output("art"), {"name": "art", "type": "BG/OL",
                                                "columns": {"BG/OL": keys}}], name="held")
        moving = "written"
        for options, hows in (([], ["written", "copied", "copied", moving]),
                              (["-interlace"], ["written"] * 4)):
            log = self.folder / f"log{len(options)}"
            done = self.image("--log-jsonl", log, *options, scene=held)
            self.assertEqual([event["how"] for event in events_of(log)[1:-1]], hows)
            self.assertEqual(done.stdout.count("Rendering frame "), 4)
            self.assertEqual(len(set(self.files().values())), 1)

    def test_a_log_tells_all(self):
        log = self.folder / "log"
        done = self.image("--log-jsonl", log, "--jobs", 2, "--progress", "--strict", "2-3")
        first, *frames, last = events_of(log)
        self.assertEqual((first["event"], first["frames"], last["event"], last["code"]),
                         ("started", 2, "finished", 0))
        self.assertEqual([(event["event"], event["frame"], event["file"]) for event in frames],
                         [("frame done", n, str(self.frames / f"000{n}.tif")) for n in (2, 3)])
        self.assertTrue(all(event["seconds"] > 0 and event["peak_memory"] > 1e6
                            for event in frames))
        self.assertRegex(done.stderr, r"\A2 of 2 frames, [\d.]+ a second, 0:00 left\n\Z")

    def test_what_is_missing_is_named(self):
        self.art.unlink()
        lacks = f"CMontaray: frame 1: {self.art}: "
        for options, code, told in (([], 0, ""), (["--strict"], 221, lacks),
                                    (["--dry-run"], 222, lacks),
                                    (["--strict", "--jobs", "2"], 221, lacks)):
            done = self.image(*options)
            self.assertEqual(done.returncode, code, options)
            self.assertTrue(done.stderr.startswith(told), done.stderr)
        self.assertIn(f"Would render frame 2: {self.frames}/0002.tif\n",
                      self.image("--dry-run").stdout)

    def test_references_are_checked(self):
        def listed(*options):
            done = run("CMontaray", "list_refs", *options, self.scene)
            return done.returncode, done.stdout
        size = self.art.stat().st_size
        self.assertEqual(listed("--check"), (0, f"{size}\t{self.art}\n"))
        self.assertEqual(json.loads(listed("--json", "--check")[1]),
                         [{"path": str(self.art), "exists": True, "size": size}])
        self.art.unlink()
        self.assertEqual(listed(), (0, f"{self.art}\n"))
        self.assertEqual(listed("--check"), (222, f"missing\t{self.art}\n"))
        self.assertEqual(json.loads(listed("--json")[1]), [{"path": str(self.art)}])


class Interrupted(InFolder):
    """Runs that take long enough to meet them on their way."""

    def setUp(self):
        super().setUp()
        self.frames = self.folder / "frames"
        keys = [{"frame": 1, "value": [0, 0, 0]}, {"frame": 400, "value": [1, 1, 1]}]
        self.scene = self.make_scene([output("card"), {"name": "card", "type": "Color Card",
                                                       "columns": {"Color": keys}}],
                                     length=400, name="long")

    def begin(self, *options):
        started = subprocess.Popen(
            [BIN / "CMontaray", "image", "-silent", "-width", "900", "-o", self.frames, *options,
             self.scene], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        wait_until(lambda: list(self.frames.glob("*.tif")))
        return started

    def expect_whole(self):
        for path in self.frames.iterdir():
            self.assertRegex(path.name, r"\A\d{4}\.tif\Z")
            self.assertEqual(convert(path, "-format", "%w", "info:"), "900")

    def test_a_signal_leaves_whole_frames_alone(self):
        for number, options in ((signal.SIGINT, []), (signal.SIGTERM, ["--jobs", "2"])):
            started = self.begin(*options)
            started.send_signal(number)
            started.communicate(timeout=LONG_ENOUGH)
            self.assertEqual(started.returncode, 128 + number)
            self.assertLess(len(list(self.frames.iterdir())), 400)
            self.expect_whole()
            shutil.rmtree(self.frames)

    def test_what_a_killed_process_had_is_made_by_another(self):
        started = self.begin("--jobs", "2", "--frames", "1-60")
        children = Path(f"/proc/{started.pid}/task/{started.pid}/children").read_text().split()
        self.assertEqual(len(children), 2)
        os.kill(int(children[0]), signal.SIGKILL)
        _, errors = started.communicate(timeout=LONG_ENOUGH)
        self.assertEqual((started.returncode, errors), (0, ""))
        self.assertEqual(len(list(self.frames.iterdir())), 60)
        self.expect_whole()


if __name__ == "__main__":
    unittest.main()
