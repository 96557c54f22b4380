"""What fails outside the program must be told, and must leave the copies that were there."""
import errno
import os
import socket
import time

from fault_fixture import FaultRun, told
from fixture import ALL_COPIED, PREFIX, SOME_FAILED, read, write
from write_config import SourceFolder, map_drive


class SilentLossCases(FaultRun):
    def test_a_source_drive_that_vanishes_is_told(self):
        files = self.make_many(40, folders=8)
        left = self.empty_folder("left of the source")
        system = self.faulty("q")
        for when in (("flush", 6), ("opendir", 5)):
            with self.subTest(when=when):
                self.empty_nas()
                system.tell("reset")
                system.tell("backing", self.source)
                system.tell("when", *when, "/", "backing", left)
                run = self.listen(SOME_FAILED)
                self.assertTrue(any("Q:" in line and ".txt" not in line for line in run.lines), run.lines)
        system.tell("backing", self.source)
        self.run_program()
        self.assert_backed_up(files)

    def test_nothing_is_made_on_what_is_left_of_the_destination(self):
        self.make("Daten/alt.txt")
        self.run_program()
        files = self.make_many(40, folders=8)
        left = self.empty_folder("left of the destination")
        system = self.faulty("n")
        # Between two files: when the copying has begun and asks for the next folder.
        next_folder = ("when", "create", 2, "/Daten/", "when", "getattr", 1, "/Daten/4")
        system.tell(*next_folder, "backing", left)
        system.tell(*next_folder, "after", 3000, "backing", self.nas)
        run = self.listen(None)
        self.assertEqual(os.listdir(left), [])
        if run.code == ALL_COPIED:
            self.assert_backed_up(files)
        else:
            self.assertEqual(run.code, SOME_FAILED)
            self.assert_told(run, "Das Ziel ist nicht mehr erreichbar")

    def test_a_destination_without_what_the_last_run_left_is_told_once(self):
        files = self.make_many(12)
        self.run_program()
        os.rename(self.nas, self.nas + " of before")
        os.makedirs(self.nas)
        run = self.listen(SOME_FAILED)
        self.assert_told(run, "N:")
        self.assert_backed_up(files)
        self.assertEqual(self.run_program(), [])

    def test_a_full_nas_is_told_file_by_file(self):
        self.make("Daten/alt.txt")
        self.run_program()
        files = self.make_many(48, folders=6)
        system = self.faulty("n")
        system.tell("room", 0)
        run = self.listen(SOME_FAILED)
        for path in files:
            self.assert_told(run, "Q:\\" + path.replace("/", "\\"))
        system.tell("room", -1)
        self.run_program()
        self.assert_backed_up(files)

    def test_what_failed_is_tried_again_at_the_end(self):
        files = self.make_many(40)
        system = self.faulty("n")
        system.tell("when", "create", 10, "/", "room", 0)
        system.tell("when", "create", 20, "/", "room", -1)
        self.run_program(None)
        self.assert_backed_up(files)

    def test_names_that_differ_only_in_case_are_told(self):
        self.make("Daten/Bericht.txt", b"one")
        self.make("Daten/BERICHT.TXT", b"the other")
        run = self.listen(SOME_FAILED)
        names = ("Bericht.txt", "BERICHT.TXT")
        self.assertTrue(any(told(run, "Q:\\Daten\\" + name, " ") for name in names), run.lines)
        self.assertEqual(len(self.copies()), 1)

    def test_a_name_that_history_has_taken(self):
        self.configure(SourceFolder("Q:\\Daten", History=True))
        now = time.time_ns()
        self.make("Daten/Bericht.txt", b"version 0", now - 900 * 10**9)
        self.run_program()
        self.make("Daten/Bericht.txt", b"version 1", now - 600 * 10**9)
        self.run_program()
        self.assertEqual(self.copies(), ["Bericht #001.txt", "Bericht.txt"])
        self.make("Daten/Bericht #001.txt", b"another file", now - 1200 * 10**9)
        run = self.listen(None)
        if not self.is_backed_up("Daten/Bericht #001.txt"):
            self.assertEqual(run.code, SOME_FAILED)
            self.assert_told(run, "Bericht #001.txt")
        self.assertIn(b"version 0", [read(self.copy("Daten/" + name)) for name in self.copies()])

    def test_writes_that_the_destination_loses_are_failed_copies(self):
        files = self.make_many(12)
        system = self.faulty("n")
        self.run_program()
        old = [read(self.copy(path)) for path in files]
        self.make_many(12, content="again", age=0)
        system.tell("lose", 1)
        run = self.listen(SOME_FAILED)
        self.assertTrue([read(self.copy(path)) for path in files] == old, "an earlier copy is lost")
        self.assertTrue(run.lines)
        system.tell("lose", 0)
        self.run_program()
        self.assert_backed_up(files)

    def test_a_bad_sector_leaves_the_old_copy(self):
        modified = time.time_ns()
        for path in ("Daten/a.bin", "Daten/b.bin"):
            self.make(path, b"old" * 100_000, modified - 3600 * 10**9)
        system = self.faulty("q")
        self.run_program()
        self.make("Daten/a.bin", b"new" * 100_000, modified)
        self.make("Daten/b.bin", b"new" * 100_000, modified)
        system.tell("bad", "/Daten/a.bin", 131072)
        run = self.listen(SOME_FAILED)
        self.assert_told(run, "Q:\\Daten\\a.bin")
        self.assertEqual(read(self.copy("Daten/a.bin")), b"old" * 100_000)
        self.assert_backed_up(["Daten/b.bin"])
        system.tell("reset")
        self.run_program()
        self.assert_backed_up(["Daten/a.bin", "Daten/b.bin"])

    def test_the_backup_does_not_back_up_itself(self):
        host = socket.gethostname().split(".")[0].upper()[:15]
        for what, destination, rows in (
                ("inside a source, another letter", "N:", ["Q:\\Daten"]),
                ("over a link", "N:", ["Q:\\Daten"]),
                ("a source", "Q:\\Daten", ["Q:\\Daten"]),
                ("a row", "N:", ["Q:\\Daten", "N:\\"])):
            with self.subTest(what):
                self.source = self.empty_folder(f"{what}/source")
                self.make("Daten/x.txt")
                if what.startswith("a source"):
                    self.nas = os.path.join(self.source, "Daten")
                elif what.startswith("inside"):
                    self.nas = os.path.join(self.source, "Daten", "Backup")
                # As the run before has left it.
                write(os.path.join(self.nas, host, "drive_Q", "Daten", "alt.txt"))
                if what == "over a link":
                    os.symlink(self.nas, os.path.join(self.source, "Daten", "Link"))
                map_drive(PREFIX, "q", self.source)
                map_drive(PREFIX, "n", self.nas)
                self.forget()
                self.configure(*map(SourceFolder, rows), destination=destination)
                run = self.listen(None)
                paths = [os.path.relpath(os.path.join(at, name), self.nas)
                         for at, _, names in os.walk(os.path.join(self.nas, host)) for name in names]
                self.nas = self.empty_folder(f"{what}/NAS")
                self.assertIn(f"{host}/drive_Q/Daten/x.txt", paths)
                self.assertEqual([path for path in paths if path.split("/").count(host) > 1], [])
                self.assert_told(run, host)

    def test_a_target_that_is_its_own_source_stays(self):
        self.configure(SourceFolder("Q:\\Daten", History=True))
        self.make("Daten/x.txt", b"first", time.time_ns() - 3600 * 10**9)
        self.run_program()
        self.source = os.path.join(self.host, "drive_Q")
        map_drive(PREFIX, "q", self.source)
        self.make("Daten/x.txt", b"second")
        self.run_program(None)
        self.assertEqual(self.copies(), ["x.txt"])
        self.assertEqual(read(self.copy("Daten/x.txt")), b"second")

    def test_history_keeps_the_name_when_the_copy_fails(self):
        self.configure(SourceFolder("Q:\\Daten", History=True))
        faults = (("create", 1, 9999, errno.EACCES), ("write", 1, 9999, errno.ENOSPC), ("rename", 1, 1, errno.EIO),
                  ("rename", 2, 1, errno.EIO))
        files = [f"Daten/{number}/x.txt" for number in range(len(faults))]
        for path in files:
            self.make(path, b"first", time.time_ns() - 3600 * 10**9)
        system = self.faulty("n")
        self.run_program()
        for path, fault in zip(files, faults):
            self.make(path, b"again", time.time_ns() - 1800 * 10**9)
            system.tell("fail", *fault, os.path.dirname(path) + "/")
        self.run_program(SOME_FAILED)
        for path, fault in zip(files, faults):
            self.assertTrue(os.path.exists(self.copy(path)), f"no copy under its name: {fault}")
            self.assertIn(read(self.copy(path)), (b"first", b"again") if fault[0] == "rename" else (b"first",), fault)
        system.tell("reset")
        self.run_program()
        self.assert_backed_up(files)
        self.assertEqual([read(self.copy("Daten/" + name)) for name in self.versions()], [b"first"] * len(files))
