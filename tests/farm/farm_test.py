#!/usr/bin/env python3
"""Renders on a batch service: what is sent, what becomes of it, and what people are told.

    farm_test.py BIN_FOLDER ART

ART is a folder for the pictures of the demo, which are drawn if they are not there.
"""

import subprocess
import sys
from pathlib import Path

ART = Path(sys.argv.pop(2)).resolve()
DEMO = Path(__file__).resolve().parents[2] / "demo"

from cluster import Cluster, wait_until  # pylint: disable=wrong-import-position
from studio import Studio, images, main, output  # pylint: disable=wrong-import-position


class Demo(Studio):
    width = 320

    def make_demo(self):
        if not (ART / "done").exists():
            subprocess.run([sys.executable, DEMO / "draw_art.py", ART], check=True)
            (ART / "done").touch()
        (self.folder / "shot.json").write_text(subprocess.run(
            [sys.executable, DEMO / "make_shot.py", ART], check=True, capture_output=True,
            text=True).stdout)
        self.farm("build", self.folder / "shot.json", self.folder / "shot")
        return self.folder / "shot"

    def test_chunks_are_what_one_run_makes(self):
        self.use(self.make_demo())
        self.submit()
        self.expect_frames(*range(1, 73))
        self.assertEqual(self.sent(), list(range(9)))
        self.assertEqual(set(self.ask("%N")), {"node1", "node2"})


class Orders(Studio):
    def setUp(self):
        super().setUp()
        self.use(self.make_cards(20))

    def test_what_is_there_or_on_its_way_is_not_sent_again(self):
        self.hold()
        for frames, sent in (("1-12", [0, 1]), ("1-12", [0, 1]), ("6-20", [0, 1, 2])):
            self.submit("--frames", frames)
            self.assertEqual(self.sent(), sent, frames)
        self.wait_for_runs(2)
        self.let_go()
        self.expect_frames(*range(1, 21))
        self.submit()
        self.assertEqual(self.sent(), [0, 1, 2])
        for frame in (9, 16):
            (self.frames / f"{frame:04}.tif").unlink()
        self.submit()
        self.expect_frames(*range(1, 21))
        self.assertEqual(self.sent(), [0, 1, 1, 2])
        self.assertEqual(self.status()["count"]["done"], 20)

    def test_a_task_that_is_ended_leaves_nothing(self):
        self.hold()
        self.submit()
        self.wait_for_runs(2)
        running = self.cluster.ask("squeue", "-hr", "-t", "running", "-o", "%i").split()
        self.cluster.ask("scancel", running[0])
        wait_until(lambda: self.status()["frames"]["missing"], "nothing is missing")
        self.let_go()
        self.cluster.wait_until_idle()
        self.expect_no_scratch()
        status = self.status()
        self.assertIn(status["frames"]["missing"], ("1-8", "9-16"))
        self.assertEqual(status["failures"], [])
        self.submit()
        self.expect_frames(*range(1, 21))
        self.assertEqual(len(self.sent()), 4)

    def test_cancel_ends_all(self):
        self.hold()
        self.submit()
        self.wait_for_runs(2)
        self.farm("cancel", self.frames)
        self.expect_frames()
        self.expect_no_scratch()
        status = self.status()
        self.assertEqual((status["frames"]["missing"], status["failures"]), ("1-20", []))
        self.let_go()
        self.submit()
        self.expect_frames(*range(1, 21))

    def test_a_missing_picture_is_told_and_its_frame_sent_alone_when_it_is_there(self):
        pictures = [self.folder / f"{number}.ppm" for number in range(1, 21)]
        for number, picture in enumerate(pictures):
            picture.write_bytes(b"P6 16 12 255\n" + bytes([number * 12]) * 16 * 12 * 3)
        self.use(self.make_scene([output("cel"), images("cel", *pictures)], length=20))
        pictures[10].rename(self.folder / "elsewhere")
        self.submit(options=["--strict"])
        self.expect_frames(*(frame for frame in range(1, 21) if frame != 11))
        status = self.status()
        self.assertEqual(status["frames"]["failed"], "11")
        failure = status["failures"][0]
        self.assertEqual([failure[name] for name in ("chunk", "frames", "try", "result", "final")],
                         [1, "11", 3, 221, True])
        (self.folder / "elsewhere").rename(pictures[10])
        self.submit(options=["--strict"])
        self.expect_frames(*range(1, 21))
        self.assertEqual(self.sent(), [0, 1, 1, 2])

    def test_two_versions_of_a_scene_do_not_mix(self):
        self.hold()
        self.submit()
        self.wait_for_runs(2)
        self.make_cards(20, last_value=0.5)
        self.let_go()
        self.expect_frames()
        status = self.status()
        self.assertEqual(status["frames"]["failed"], "1-20")
        self.assertEqual({(failure["try"], failure["final"]) for failure in status["failures"]},
                         {(1, True)})
        self.use(self.scene)
        self.submit()
        self.expect_frames(*range(1, 21))


if __name__ == "__main__":
    main(Cluster, 2)
