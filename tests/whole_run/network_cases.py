"""The network of a home: destinations that come late or drop out, and who else works on them."""
import errno
import glob
import os
import threading
import time

from fault_fixture import FaultRun, told
from fixture import ALL_COPIED, PREFIX, SOME_FAILED, read, write
from program import Program
from write_config import SourceFolder


class NetworkCases(FaultRun):
    def test_a_destination_that_comes_late_is_waited_for(self):
        files = self.make_many(5)
        os.rename(self.nas, self.nas + " asleep")
        wake_up = threading.Timer(5, os.rename, (self.nas + " asleep", self.nas))
        wake_up.start()
        program = Program("/COPY")
        code = program.wait(30)
        if code is None:
            program.close()
        wake_up.join()
        self.assertEqual(code, ALL_COPIED)
        self.assert_backed_up(files)

    def test_a_short_drop_out_is_waited_for(self):
        system = self.faulty("n")
        for number, error in enumerate((errno.EHOSTDOWN, errno.ENODEV)):
            with self.subTest(errno.errorcode[error]):
                system.tell("reset")
                files = self.make_many(60, folders=6, start=100 * number)
                system.tell("when", "create", 15, "/", "down", error, 3000, "/")
                self.listen(ALL_COPIED)
                self.assert_backed_up(files)

    def test_refusals_that_pass_are_tried_again(self):
        """As a virus scanner makes them: access denied, sharing violation."""
        system = self.faulty("n")
        files = self.make_many(30, folders=5)
        for folder, kind, error in ((0, "create", errno.EACCES), (1, "create", errno.EAGAIN),
                                    (2, "rename", errno.EACCES), (3, "rename", errno.EAGAIN)):
            system.tell("fail", kind, 3, 2, error, f"/Daten/{folder}/")
        self.listen(ALL_COPIED)
        self.assert_backed_up(files)

    def test_two_programs_at_once_do_not_disturb_each_other(self):
        files = self.make_many(150, folders=5)
        self.faulty("n")
        programs = [Program("/COPY") for _ in range(2)]
        codes = [program.wait(60) for program in programs]
        for program in programs:
            if program.running():
                program.close()
        self.assertEqual(codes, [ALL_COPIED, ALL_COPIED])
        self.assert_backed_up(files)
        self.assert_hash_table_names(files)
        self.assertEqual(self.copies(), sorted(path.removeprefix("Daten/") for path in files))

    def test_a_damaged_table_is_moved_aside_and_the_run_goes_on(self):
        old = self.make_many(8)
        self.run_program()
        table = os.path.join(self.host, "Vardeko.dat")
        damaged = read(table)[:-1]
        write(table, damaged)
        new = self.make_many(4, start=100)
        run = self.listen(SOME_FAILED)
        self.assert_told(run, "Vardeko.dat")
        self.assertEqual([path for path in run.written if path.startswith("Daten/")], new)
        aside = [path for path in glob.glob(os.path.join(self.host, "Vardeko*")) if path != table]
        self.assertIn(damaged, map(read, aside))
        self.assert_backed_up(old + new)
        self.assertEqual(self.run_program(), [])

    def test_rows_as_people_type_them(self):
        home = glob.glob(os.path.join(PREFIX, "drive_c", "users", "*", "Temp"))[0].removesuffix("/Temp")
        write(os.path.join(home, "Daten", "g.txt"))
        rows = {"a": " Q:\\a ", "b": '"Q:\\b"', "c": "Q:/c", "d": "\\\\?\\Q:\\d", "e": "Q:\\e\\\\", "f": "q:\\F"}
        for name in rows:
            self.make(f"{name}/tief/x.txt", name.encode())
        self.configure(*map(SourceFolder, [*rows.values(), "%USERPROFILE%\\Daten"]))
        run = self.listen(None)
        found = {os.path.relpath(os.path.join(at, name), self.host).upper()
                 for at, _, names in os.walk(self.host) for name in names if name.endswith(".txt")}
        rows["g"] = "%USERPROFILE%\\Daten"
        right = {name: f"drive_Q/{name}/tief/x.txt" for name in "abcde"}
        right |= {"f": "drive_Q/F/tief/x.txt", "g": f"drive_C/users/{os.path.basename(home)}/Daten/g.txt"}
        self.assertEqual(found - {path.upper() for path in right.values()}, set(), "under a wrong name")
        for name, path in right.items():
            with self.subTest(rows[name]):
                self.assertTrue(path.upper() in found or told(run, rows[name].strip()), run.lines)
        self.assertTrue(run.code == ALL_COPIED or len(run.lines) > len(found), "failed without a word")

    def test_names_that_file_screens_let_pass(self):
        files = self.make_many(5)
        system = self.faulty("n")
        self.run_program()
        self.assert_backed_up(files)
        created = [os.path.basename(path) for path in system.created()]
        self.assertGreaterEqual(len(created), len(files))
        self.assertEqual([name for name in created if name.startswith("~") or name.lower().endswith(".tmp")], [])
