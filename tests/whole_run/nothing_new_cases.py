"""A file that has not changed is not copied again, whatever the destination makes of dates and names."""
import calendar
import os
import time

from fault_fixture import FaultRun
from fixture import read
from write_config import SourceFolder

CENTRAL_EUROPE = ("env", "TZ=CET-1CEST,M3.5.0,M10.5.0/3")
TOKYO = ("env", "TZ=JST-9")
NEW_YORK = ("env", "TZ=EST5EDT,M3.2.0,M11.1.0")


class NothingNewCases(FaultRun):
    def configure(self, *rows, **options):
        for row in rows:
            row.History = True
        super().configure(*rows, **options)

    def test_times_in_whole_seconds(self):
        self.check_coarse_times(1)

    def test_times_in_even_seconds(self):
        self.check_coarse_times(2)

    def check_coarse_times(self, step):
        self.faulty("n").tell("times", step)
        self.check_rounded(step)

    def test_a_disk_with_vfat(self):
        self.disk("vfat")
        self.check_rounded(2)

    def check_rounded(self, step):
        base = (time.time_ns() - 3600 * 10**9) // 10**10 * 10**10
        for number in range(10):
            self.make(f"Daten/{number}.txt", b"first", base + number * 10**9 + 345_678_900)
        self.assertEqual(len(self.run_program()), 10)
        self.assertEqual(self.run_program(), [], "the second run")
        # Earlier programs left dates rounded down.
        for name in self.copies():
            modified = os.stat(os.path.join(self.source, "Daten", name)).st_mtime_ns // (step * 10**9) * (step * 10**9)
            os.utime(self.copy("Daten/" + name), ns=(modified, modified))
        os.unlink(os.path.join(self.host, "Vardeko.dat"))
        self.assertEqual(self.run_program(None), [], "rounded down")
        self.assertEqual(self.versions(), [])
        self.make("Daten/3.txt", b"again", base + 13 * 10**9)
        self.assertEqual(len(self.run_program()), 2)  # it and its version
        self.assertEqual(read(self.copy("Daten/3.txt")), b"again")

    def test_a_destination_that_keeps_accents_apart(self):
        files = ["Daten/Übersicht.txt", "Daten/Ordner ä/é è.txt", "Daten/Ñandú.txt", "Daten/ohne.txt"]
        for path in files:
            self.make(path, path.encode(), time.time_ns() - 3600 * 10**9)
        self.faulty("n").tell("apart", 1)
        self.assertEqual(self.run_program(), sorted(files))
        self.assertEqual(self.run_program(), [])
        os.unlink(os.path.join(self.host, "Vardeko.dat"))
        self.assertEqual(self.run_program(None), [], "without table")

    def test_another_time_zone(self):
        files = self.make_many(20)
        self.run_program(via=CENTRAL_EUROPE)
        self.assert_backed_up(files)
        for zone in (TOKYO, NEW_YORK):
            self.assertEqual(self.run_program(via=zone), [], zone)

    def test_a_change_in_the_hour_that_comes_twice(self):
        first = calendar.timegm((2024, 10, 27, 0, 30, 0)) * 10**9  # 2:30, still summer time
        self.make("Daten/x.txt", b"first", first)
        self.run_program(via=CENTRAL_EUROPE)
        self.make("Daten/x.txt", b"again", first + 40 * 60 * 10**9)  # 2:10
        self.run_program(via=CENTRAL_EUROPE)
        self.assertEqual(read(self.copy("Daten/x.txt")), b"again")

    def test_overlapping_rows_copy_a_file_once(self):
        self.configure(*(SourceFolder(row) for row in
                         ("Q:\\Daten", "Q:\\Daten\\0", "q:\\DATEN", "Q:\\Daten\\")))
        files = self.make_many(6, folders=2)
        for content in ("first", "again"):
            self.make_many(6, folders=2, content=content, age=3600 if content == "first" else 60)
            self.run_program()
            self.assert_backed_up(files)
            self.assertEqual(len(self.versions()), 0 if content == "first" else 6)
