"""A studio that renders on a cluster of the test's own.

    *_test.py BIN_FOLDER

The bin folder is that of an installation. The studio has its own, with a renderer that keeps what
it has rendered to itself while there is a file `hold`.
"""

import ctypes
import json
import os
import shutil
import struct
import sys
import threading
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "command_line"))

# pylint: disable=wrong-import-position
import programs
from cluster import NOT_HERE, NotHere, wait_until
from programs import images, output

INSTALLED = programs.BIN.parent
RENDERER = """#!/bin/bash
{bin}/CMontaray "$@"
result=$?
[ "$1" = image ] || exit $result
echo "$HOSTNAME $SLURM_ARRAY_TASK_ID" >>{folder}/runs
while [ -e {folder}/hold ]; do sleep 0.1; done
exit $result
"""

EVENT = struct.Struct("iIII")  # of inotify
MODIFY, CLOSE_WRITE, MOVED_TO, CREATE, IGNORED = 0x2, 0x8, 0x80, 0x100, 0x8000


class Watcher(threading.Thread):
    """Reads each frame as soon as it appears in a folder. Keeps the names of those that were not
    whole, or that came there in another way than whole."""

    def __init__(self, folder, whole):
        super().__init__()
        self.folder, self.whole, self.faults = folder, whole, []
        self.library = ctypes.CDLL(None)
        self.events = self.library.inotify_init()
        self.watch = self.library.inotify_add_watch(
            self.events, os.fsencode(folder), MODIFY | CLOSE_WRITE | MOVED_TO | CREATE)
        self.start()

    def run(self):
        while True:
            data = os.read(self.events, 1 << 16)
            while data:
                _, event, _, length = EVENT.unpack_from(data)
                name = data[EVENT.size:EVENT.size + length].rstrip(b"\0").decode()
                data = data[EVENT.size + length:]
                if event == IGNORED:
                    return
                if name in self.whole and not (event == MOVED_TO and self.is_whole(name)):
                    self.faults.append(name)

    def is_whole(self, name):
        try:
            return (self.folder / name).read_bytes() == self.whole[name]
        except OSError:
            return False

    def stop(self):
        self.library.inotify_rm_watch(self.events, self.watch)
        self.join()
        os.close(self.events)


class Studio(programs.InFolder):
    cluster = None
    width = 64

    def setUp(self):
        super().setUp()
        self.scene = None
        self.frames = self.folder / "frames, 100% done"
        self.frames.mkdir()
        self.whole = {}
        watcher = Watcher(self.frames, self.whole)
        self.addCleanup(lambda: self.assertEqual(watcher.faults, []))
        self.addCleanup(watcher.stop)
        for part in INSTALLED.iterdir():
            (self.folder / part.name).symlink_to(part)
        programs.BIN = self.folder / "bin"
        programs.BIN.unlink()
        programs.BIN.mkdir()
        for program in ("montaray-scene", "montaray-farm-task"):
            shutil.copy(INSTALLED / "bin" / program, programs.BIN)
        renderer = programs.BIN / "CMontaray"
        renderer.write_text(RENDERER.format(bin=INSTALLED / "bin", folder=self.folder))
        renderer.chmod(0o755)

    def use(self, scene):
        """Renders it in one go, to know what is to come."""
        self.scene = scene
        whole = self.folder / "whole"
        done = programs.run(INSTALLED / "bin/CMontaray", "image", "-silent", "-width", self.width,
                            "-o", whole, scene)
        self.assertEqual((done.returncode, done.stdout), (0, ""))
        self.whole.update((file.name, file.read_bytes()) for file in whole.iterdir())

    def make_cards(self, length, last_value=1):
        keys = [{"frame": 1, "value": [0, 0, 0]}, {"frame": length, "value": [last_value, 0, 1]}]
        return self.make_scene([output("card"), {"name": "card", "type": "Color Card",
                                                          "columns": {"Color": keys}}],
                               length=length)

    def hold(self):
        (self.folder / "hold").touch()

    def let_go(self):
        (self.folder / "hold").unlink()

    def farm(self, verb, *words):
        done = programs.run("montaray-scene", verb, *words)
        self.assertEqual(done.stderr, "")
        return done.stdout

    def submit(self, *words, options=()):
        self.farm("submit", self.scene, *words, "--", "-width", self.width, *options, "-o",
                  self.frames)

    def status(self):
        """Of the latest job."""
        return json.loads(self.farm("status", self.frames, "--json"))["jobs"][-1]

    def ask(self, what):
        """About all tasks, living and ended."""
        tasks = self.cluster.ask("squeue", "-hr", "-t", "all", "-o", f"{what} %Z").splitlines()
        return [task.split()[0] for task in tasks if str(self.frames) in task]

    def sent(self):
        """The chunks of all orders."""
        return sorted(map(int, self.ask("%K")))

    def runs(self):
        """Of the renderer: on which host, for which chunk."""
        runs = self.folder / "runs"
        return [line.split() for line in runs.read_text().splitlines()] if runs.exists() else []

    def wait_for_runs(self, number):
        wait_until(lambda: len(self.runs()) >= number, f"{number} runs of the renderer")

    def expect_frames(self, *frames):
        """Exactly these, each whole."""
        self.cluster.wait_until_idle()
        found = {file.name: file.read_bytes() for file in self.frames.glob("0*")}
        self.assertEqual(sorted(found), [f"{frame:04}.tif" for frame in sorted(frames)])
        for name, contents in found.items():
            self.assertTrue(contents == self.whole[name], name)

    def expect_no_scratch(self):
        self.assertEqual(list(self.frames.glob(".farm-*/tmp/*")), [])


def main(cluster, nodes):
    try:
        with cluster(nodes) as Studio.cluster:
            outcome = unittest.main(exit=False).result
    except NotHere as reason:
        print(f"skipped: {reason}")
        sys.exit(NOT_HERE)
    sys.exit(not outcome.wasSuccessful())
