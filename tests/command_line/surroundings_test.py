#!/usr/bin/env python3
"""Consoles that are closed, full, not read or a terminal, limits, and folders of long names.

    surroundings_test.py BIN_FOLDER
"""

import fcntl
import json
import os
import pty
import re
import resource
import shutil
import signal
import subprocess
import unittest

from options_test import wait_until
from programs import BIN, LONG_ENOUGH, InFolder, card, convert, images, output, run


class Surroundings(InFolder):
    def setUp(self):
        super().setUp()
        self.frames = self.folder / "frames"
        self.art = self.folder / "art.png"
        convert("-size", "40x30", "gradient:red-blue", self.art)
        self.scene = self.make_scene([output("art", "card"), images("art", self.art),
                                      card("card", 1, 0, 0)])

    def command(self, *options):
        words = [BIN / "CMontaray", "image", "-width", 64, "-o", self.frames, *options, self.scene]
        return [str(word) for word in words]

    def test_a_list_or_a_log_that_is_cut_off_is_told(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            for program, *words, told in (
                    ("CMontaray", "list_refs", self.scene, "CMontaray: The list"),
                    ("montaray-scene", "show", self.scene, "montaray-scene: not all")):
                done = subprocess.run([BIN / program, *words], stdout=full, check=False,
                                      stderr=subprocess.PIPE, text=True)
                self.assertIn(told, done.stderr)
                self.assertNotEqual(done.returncode, 0)
        done = run(*self.command("--log-jsonl", "/dev/full"))
        self.assertEqual((done.returncode, done.stderr),
                         (224, "CMontaray: The log can't be written to its end.\n"))
        self.assertEqual(len(list(self.frames.iterdir())), 4)

    def test_words_go_nowhere_if_the_console_is_closed(self):
        log = self.folder / "log"
        command = self.command("--log-jsonl", log, "--jobs", "2")
        subprocess.run(["bash", "-c", 'exec "$@" >&- 2>&- <&-', "bash", *command], check=True)
        events = [json.loads(line)["event"] for line in log.read_text().splitlines()]
        self.assertEqual(events, ["started", *["frame done"] * 4, "finished"])

    def test_a_signal_ends_a_run_whose_words_nobody_reads(self):
        for options, n_frames in (([], 4), (["--jobs", "2"], 0)):
            reader, writer = os.pipe()
            os.write(writer, bytes(fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)))
            with subprocess.Popen(self.command(*options), stdout=writer) as started:
                wait_until(lambda process=started, n=n_frames: self.is_stuck(process, n))
                started.send_signal(signal.SIGTERM)
                self.assertEqual(started.wait(LONG_ENOUGH), 128 + signal.SIGTERM)
            self.assertFalse(list(self.frames.glob("*~")))
            shutil.rmtree(self.frames)
            os.close(reader)
            os.close(writer)

    def is_stuck(self, process, n_frames):
        """It waits for something once it has come so far, and there is but one thing to wait for."""
        if not self.frames.exists() or len(list(self.frames.iterdir())) < n_frames:
            return False
        with open(f"/proc/{process.pid}/stat", encoding="utf-8") as facts:
            return facts.read().rsplit(")", 1)[1].split()[0] == "S"

    def test_a_limit_to_the_size_of_files_is_a_full_disc(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))
        for options in ([], ["--jobs", "2"]):
            done = subprocess.run(self.command("-tga", *options), preexec_fn=limit, check=False,
                                  capture_output=True)
            self.assertEqual((done.returncode, list(self.frames.iterdir())), (210, []))

    def shown_on_terminal(self, *options):
        leader, terminal = pty.openpty()
        subprocess.run(self.command("--progress", *options), stdout=terminal, stderr=terminal,
                       check=True)
        os.close(terminal)
        shown = ""
        while not shown.endswith("left\r\n"):
            shown += os.read(leader, 1 << 16).decode()
        os.close(leader)
        return shown

    def test_the_bar_stays_on_the_terminal_below_all_words(self):
        shown = self.shown_on_terminal("-silent")
        self.assertRegex(shown, r"\A\r\x1b\[K\[\.{30}\] 0 of 4 frames\r")
        self.assertRegex(shown, r"\[#{30}\] 4 of 4 frames, .* left\r\n\Z")
        self.assertFalse(re.search(r"\x1b\[K\r?\x1b\[K", shown), "it was taken away")
        for options in ([], ["--jobs", "2"]):
            shown = self.shown_on_terminal(*options)
            for frame in range(1, 5):
                self.assertRegex(shown, rf"\x1b\[KRendering frame {frame}\r\n\r\x1b\[K\[")

    def test_a_folder_is_the_callers_however_long_the_way_to_it(self):
        deep = self.folder.joinpath(*["a" * 100] * 3)
        deep.mkdir(parents=True)
        for options in (["--dry-run"], []):
            done = run("CMontaray", "image", "-silent", "-o", "here/", *options, self.scene, cwd=deep)
            self.assertEqual(done.returncode, 0)
        self.assertEqual(len(list((deep / "here").iterdir())), 4)

    def test_only_a_file_of_its_own_is_replaced_by_tiles(self):
        whole = self.art.read_bytes()
        os.mkfifo(self.folder / "fifo")
        for target in (self.art, self.folder / "fifo", self.folder):
            done = run("montaray-scene", "tile", self.art, target)
            self.assertEqual((done.returncode, done.stderr), (
                1, f"montaray-scene: {target} is the image itself, or no file\n"))
        self.assertEqual(self.art.read_bytes(), whole)
        self.assertTrue((self.folder / "fifo").is_fifo())


if __name__ == "__main__":
    unittest.main()
