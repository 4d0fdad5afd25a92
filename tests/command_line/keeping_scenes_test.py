#!/usr/bin/env python3
"""How scenes are checked, recovered and backed up, and find their artwork again.

    keeping_scenes_test.py BIN_FOLDER
"""

import ctypes
import ctypes.util
import os
import shutil
import unittest
from pathlib import Path

from programs import InFolder, card, images, output, run

PARTS = ("Scene.contents", "XSheet", "CoverSheet", "Graph", "kvd", "DLLUsage")
XXHASH = ctypes.CDLL(ctypes.util.find_library("xxhash"))
XXHASH.XXH3_64bits.restype = ctypes.c_uint64


def checksum(contents):
    return XXHASH.XXH3_64bits(contents, ctypes.c_size_t(len(contents)))


def contents_of(folder):
    return {str(file.relative_to(folder)): file.read_bytes()
            for file in sorted(folder.rglob("*")) if file.is_file()}


def state_of(folder):
    """Everything that a program which only looks must leave alone."""
    facts = {}
    for file in (folder, *sorted(folder.rglob("*"))):
        status = file.lstat()
        facts[str(file)] = (status.st_ino, status.st_mode, status.st_size, status.st_mtime_ns,
                            status.st_ctime_ns)
    return facts, contents_of(folder)


def write_record(folder, contents_by_name):
    """That a save had written these parts when it was interrupted."""
    text = "COMMIT 1\n" + "".join(f"{name} {len(contents)} {checksum(contents):016x}\n"
                                  for name, contents in contents_by_name.items())
    text += f"END {checksum(text.encode()):016x}\n"
    (folder / "Scene.commit~").write_text(text)


class Scenes(InFolder):
    def setUp(self):
        super().setUp()
        self.art = self.folder / "art"
        self.art.mkdir()
        (self.art / "bg.png").write_text("a picture")
        self.scene = self.make_scene([output("bg"), images("bg", self.art / "bg.png")],
                                     name="shot")

    def expect(self, verb, status, *lines, options=(), scene=None):
        """The lines of one stream; the other is silent."""
        done = run("montaray-scene", verb, *options, scene or self.scene)
        text = "".join(line + "\n" for line in lines)
        self.assertIn((done.returncode, done.stdout, done.stderr),
                      ((status, text, ""), (status, "", text)))

    def expect_check(self, status, *lines, options=(), scene=None):
        before = state_of(self.folder)
        self.expect("check", status, *lines, options=options, scene=scene)
        self.assertEqual(state_of(self.folder), before)


class Check(Scenes):
    def expect_fault(self, part, words, damage):
        path = self.scene / part
        whole = path.read_bytes()
        damage(path)
        self.expect_check(1, f"{path}: {words}")
        path.write_bytes(whole)

    def test_a_sound_scene_is_passed_over_in_silence(self):
        self.expect_check(0)
        self.assertEqual(run("montaray-scene", "check", "shot/", cwd=self.folder).stdout, "")

    def test_each_part_is_read(self):
        def flip(path):
            contents = bytearray(path.read_bytes())
            contents[-9] ^= 1
            path.write_bytes(contents)
        for part in PARTS:
            self.expect_fault(part, "The file is damaged: its checksum does not fit", flip)
        for part in PARTS[:-1]:
            self.expect_fault(part, "The file can't be opened: No such file or directory",
                              Path.unlink)
        for part, class_name in (("XSheet", "XSheet"), ("CoverSheet", "CoverSheet"),
                                 ("Graph", "CNodeGraph"), ("kvd", "KvdRecord")):
            self.expect_fault(part, "The file is damaged: an object is of another class than "
                              f"expected: expected {class_name}",
                              lambda path: shutil.copy(self.scene / "DLLUsage", path))
        self.expect_fault("Graph", "This is no file of objects", lambda path: path.write_text("x"))

    def test_parts_must_belong_together(self):
        other = self.make_scene([output("card"), card("card", 1, 0, 0)], name="other")
        shutil.copy(other / "kvd", self.scene / "kvd")
        self.expect_check(1, f"{self.scene}: The asset record has no image 1 "
                          f"({self.art}/bg.png) of the column - bg - BG/OL")

    def test_what_means_nothing_is_only_noted(self):
        for name in ("XSheet~", "Graph.CKP", "letter~"):
            (self.scene / name).write_text("x")
        (self.scene / "DLLUsage").unlink()
        self.expect_check(
            0, f"{self.scene}/XSheet~: note: is left from a save that did not finish, and means "
            "nothing", f"{self.scene}/Graph.CKP: note: is a checkpoint, which no load reads",
            f"{self.scene}/DLLUsage: note: is not there; no load needs it")

    def test_bad_usage_and_no_scene(self):
        for words in (("check",), ("check", self.scene, self.scene), ("check", ""),
                      ("check", "--map", "=/new", self.scene), ("check", self.scene, "--search"),
                      ("backup", self.scene, "--keep", "0"), ("recover", "--all", self.scene)):
            self.assertEqual(run("montaray-scene", *words).returncode, 2, words)
        self.assertFalse((self.folder / "shot.backup-0001").exists())
        for verb in ("check", "recover", "backup"):
            self.expect(verb, 1, f"{self.folder}/none: there is no such folder",
                        scene=self.folder / "none")


class Artwork(Scenes):
    def test_lost_artwork_is_searched(self):
        old = self.art / "bg.png"
        new = (self.folder / "new" / "bg.png")
        new.parent.mkdir()
        old.rename(new)
        self.expect_check(1, f"{self.scene}/kvd: Images 1 (bg): {old} is missing")
        found = f"{self.scene}/kvd: note: Images 1 (bg): {old} is now at {new}"
        for options in (("--search", self.folder / "none", "--search", new.parent),
                        ("--map", f"{self.art}={new.parent}")):
            self.expect_check(0, found, options=options)
        shown = run("montaray-scene", "show", "--search", "new", "shot", cwd=self.folder).stdout
        self.assertIn(f"frame 1: {new}  hold\n", shown)
        self.assertTrue(shown.endswith(f"found {old} at {new}\n1 found elsewhere, 0 lost\n"))


class Interrupted(Scenes):
    def setUp(self):
        super().setUp()
        newer = self.make_scene([output("card"), card("card", 1, 0, 0)], name="newer")
        self.old, self.new = contents_of(self.scene), contents_of(newer)
        self.record = self.scene / "Scene.commit~"

    def interrupt(self, moved, pending):
        write_record(self.scene, self.new)
        for part in moved:
            (self.scene / part).write_bytes(self.new[part])
        for part in pending:
            (self.scene / f"{part}~").write_bytes(self.new[part])

    def expect_refused_backup(self):
        self.expect("backup", 1, f"{self.scene}: a save was interrupted; recover the scene first")
        self.assertEqual(list(self.folder.glob("*.backup*")), [])

    def test_between_its_moves_a_save_is_ended(self):
        self.interrupt(PARTS[:2], PARTS[2:])
        told = f"{self.record}: a save was interrupted in its last moves; recover ends them"
        self.expect_check(1, told)
        (self.scene / "kvd").unlink()  # the new one waits
        self.expect_check(1, told)
        self.expect_refused_backup()
        self.expect("recover", 0, f"{self.scene}: the save is ended: moved CoverSheet, "
                    "DLLUsage, Graph, kvd")
        self.assertEqual(contents_of(self.scene), self.new)
        self.expect_check(0)
        self.expect("recover", 0, f"{self.scene}: no save was interrupted")

    def test_before_its_commit_a_save_is_undone(self):
        self.interrupt((), PARTS)
        self.record.write_bytes(self.record.read_bytes()[:-1])
        self.expect_check(
            1, f"{self.record}: a save was interrupted before it counted; recover undoes it",
            *(f"{self.scene}/{part}~: note: is left from a save that did not finish, and means "
              "nothing" for part in PARTS))
        self.expect_refused_backup()
        strays = ", ".join(f"{part}~" for part in PARTS)
        self.expect("recover", 0, f"{self.scene}: the save is undone: the scene is the one before "
                    f"it; {strays} of a save that did not finish mean nothing")
        self.assertFalse(self.record.exists())
        self.assertEqual({part: (self.scene / part).read_bytes() for part in PARTS}, self.old)

    def test_what_is_lost_is_told_and_nothing_touched(self):
        self.interrupt(PARTS[:2], PARTS[2:5])
        before = state_of(self.scene)
        lost = f"{self.scene}/DLLUsage: was lost in an interrupted save\n"
        checked = run("montaray-scene", "check", self.scene)
        self.assertEqual(checked.returncode, 1)
        self.assertTrue(checked.stdout.startswith(lost))
        self.expect_refused_backup()
        self.expect("recover", 1, f"{self.scene}: is damaged, and nothing was changed: a save was "
                    "interrupted, and DLLUsage is lost")
        self.assertEqual(state_of(self.scene), before)



class Backup(Scenes):
    def copy(self, number):
        return self.folder / f"shot.backup-{number:04}"

    def expect_copies(self, made, *deleted, keep=None):
        self.expect("backup", 0, f"{self.copy(made)}: made",
                    *(f"{self.copy(number)}: deleted" for number in deleted),
                    options=("--keep", keep) if keep else ())

    def test_the_newest_are_kept_and_nothing_else_is_deleted(self):
        foreign = [self.copy(3), self.copy(4), self.folder / "shot.backup-1",
                   self.folder / "shot.backup-0001.old", self.folder / "shots.backup-0001"]
        for folder in foreign:
            shutil.copytree(self.scene, folder)
        self.copy(5).symlink_to(self.scene)
        self.copy(6).write_text("notes")
        before = [state_of(folder) for folder in (self.scene, *foreign)]
        for made, deleted in ((7, ()), (8, ()), (9, (7,)), (10, (8,))):
            self.expect_copies(made, *deleted, keep=2)
        self.expect_copies(11)
        self.assertEqual([state_of(folder) for folder in (self.scene, *foreign)], before)
        self.assertEqual(sorted(self.folder.glob("shot.backup*")), sorted(
            [self.copy(number) for number in (3, 4, 5, 6, 9, 10, 11)] + foreign[2:4]))

    def test_a_copy_has_all_but_transients(self):
        deep = self.scene / "notes" / "deep"
        deep.mkdir(parents=True)
        (deep / "a letter~").write_text("kept")
        (self.scene / "XSheet~").write_text("not kept")
        shutil.move(self.scene / "Graph", self.folder / "Graph elsewhere")
        (self.scene / "Graph").symlink_to("../Graph elsewhere")
        (self.scene / "nowhere").symlink_to("../none")
        (self.scene / "locked").mkdir(0o500)
        os.mkfifo(self.scene / "pipe")
        done = run("montaray-scene", "backup", self.scene)
        self.assertEqual(done.stdout, f"{self.scene}: note: pipe is neither file nor folder, and is "
                                      f"not copied\n{self.copy(1)}: made\n")
        expected = contents_of(self.scene)
        del expected["XSheet~"]
        expected["Scene.backup"] = b"BACKUP 1\nshot.backup-0001\n"
        self.assertEqual(contents_of(self.copy(1)), expected)
        self.assertFalse((self.copy(1) / "Graph").is_symlink())
        self.assertEqual(os.readlink(self.copy(1) / "nowhere"), "../none")
        self.expect_check(0, scene=self.copy(1))

    def test_what_an_interrupted_copy_left_is_replaced(self):
        (self.folder / "shot.backup~").mkdir()
        (self.folder / "shot.backup~" / "Scene.backup").write_text("BACKUP 1\nshot.backup-0001\n")
        (self.folder / "shot.backup~" / "XSheet").write_text("half")
        self.expect_copies(1)
        self.assertEqual(contents_of(self.copy(1)).keys(),
                         {*contents_of(self.scene), "Scene.backup"})

    def test_what_is_refused(self):
        in_the_way = self.folder / "shot.backup~"
        in_the_way.mkdir()
        (in_the_way / "mine").write_text("x")
        self.expect("backup", 1, f"{self.scene}: {in_the_way} is in the way")
        self.assertEqual((in_the_way / "mine").read_text(), "x")
        shutil.rmtree(in_the_way)
        self.expect_copies(1)
        self.expect("backup", 1, f"{self.copy(1)}: is a copy itself; copy it to a name of its own "
                    "first", scene=self.copy(1))
        (self.scene / "kvd").write_text("x")
        self.expect("backup", 1, f"{self.scene}: is not sound, see check; nothing was copied",
                    options=("--keep", "1"))
        self.assertEqual(list(self.folder.glob("shot.backup*")), [self.copy(1)])


if __name__ == "__main__":
    unittest.main()
