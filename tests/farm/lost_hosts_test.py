#!/usr/bin/env python3
"""Renders on hosts that are lost in the middle of a chunk. Takes minutes, so it runs with
MONTARAY_LONG in the environment only.

    lost_hosts_test.py BIN_FOLDER
"""

import os
import sys

from cluster import NOT_HERE, wait_until
from hosts import Hosts
from studio import Studio, main

FRAMES = range(1, 17)


class LostHosts(Studio):
    """Two chunks on three hosts; the one that has the first of them is lost."""

    def setUp(self):
        super().setUp()
        self.use(self.make_cards(len(FRAMES)))
        self.hold()
        self.submit()
        self.wait_for_runs(2)
        self.lost = next(host for host, chunk in self.runs() if chunk == "0")

    def tearDown(self):
        self.cluster.wait_for_nodes()
        super().tearDown()

    def expect_another_run(self):
        self.wait_for_runs(3)
        host, chunk = self.runs()[2]
        self.assertEqual(chunk, "0")
        self.assertNotEqual(host, self.lost)

    def expect_all(self):
        self.expect_frames(*FRAMES)
        self.submit()
        self.assertEqual(self.sent(), [0, 1])
        self.expect_no_scratch()

    def test_its_power_is_cut(self):
        self.cluster.cut_power(self.lost)
        self.let_go()
        self.expect_another_run()
        self.cluster.start_node(self.lost)
        self.expect_all()

    def test_its_daemon_dies_and_its_task_goes_on(self):
        self.cluster.kill_daemon(self.lost)
        self.expect_another_run()
        self.let_go()  # and both go on at once
        self.expect_frames(*FRAMES)
        self.cluster.cut_power(self.lost)
        self.cluster.start_node(self.lost)
        self.expect_all()

    def test_its_cable_is_pulled_and_put_back(self):
        self.cluster.pull_cable(self.lost)
        self.expect_another_run()
        self.let_go()
        wait_until(lambda: self.status()["count"]["done"] == len(FRAMES), "all frames")
        self.cluster.plug_cable(self.lost)
        self.expect_all()

    def test_the_service_forgets_the_job(self):
        self.cluster.restart_controller()
        self.let_go()
        self.cluster.wait_for_nodes()
        self.cluster.wait_until_idle()
        self.submit()
        self.expect_frames(*FRAMES)


if __name__ == "__main__":
    if "MONTARAY_LONG" not in os.environ:
        print("skipped: only tools/test-long loses hosts")
        sys.exit(NOT_HERE)
    main(Hosts, 3)
