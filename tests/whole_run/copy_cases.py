"""What is copied, how it lies in the backup, and what stops a run."""
import os
import shutil
import time

import backup_tree
from fixture import (ALL_COPIED, BAD_COPIES, FOLDER_MISSING, NOT_STARTED, PREFIX, SOME_FAILED, WholeRun, local_ns, read, sparse_file,
                     write)
from write_config import SourceFolder, config_folder, map_drive, table_header, write_config


class CopyCases(WholeRun):
    def test_a_tree_of_all_sorts_is_copied_once(self):
        deep = "Daten/" + "/".join(f"Ordner {level:02} mit einem recht langen Namen" for level in range(12))
        self.assertGreater(len(deep), 400)
        contents = {
            "Daten/Übersicht.txt": b"umlauts",
            "Daten/Urlaub 😀/Strand 😀.jpg": b"beyond the basic plane",
            "Daten/中文/文件.txt": "你好".encode(),
            f"{deep}/Brief.docx": b"deep",
            "Daten/leer.txt": b"",
            "Daten/ohne Endung": b"no extension",
            "Daten/.versteckt": b"hidden here by its dot",
            "Daten/50% #1 (Kopie) 'neu' & mehr.txt": b"punctuation",
            "Daten/schreibgeschützt.pdf": b"read-only",
        }
        contents |= {f"Daten/Fotos/Bild {number:03}.jpg": bytes([number]) * (number * 37)
                     for number in range(200)}
        for path, content in contents.items():
            self.make(path, content)
        os.chmod(os.path.join(self.source, "Daten/schreibgeschützt.pdf"), 0o444)
        # With progress, with progress just so, and without.
        large = {"Daten/groß/70 MiB.bin": 70 << 20, "Daten/groß/64 MiB.bin": 64 << 20,
                 "Daten/groß/64 MiB minus 1.bin": (64 << 20) - 1}
        for path, size in large.items():
            sparse_file(os.path.join(self.source, path), size, b"the end of " + path.encode())
        times = {
            "Daten/Zeiten/Winter.txt": local_ns(2024, 1, 15, 12, 0, 0) + 123_456_700,
            "Daten/Zeiten/Sommer.txt": local_ns(2024, 7, 15, 12, 0, 0) + 999_999_900,
            "Daten/Zeiten/vor der Umstellung.txt": local_ns(2024, 3, 31, 1, 59, 59),
            "Daten/Zeiten/nach der Umstellung.txt": local_ns(2024, 3, 31, 3, 0, 0),
            "Daten/Zeiten/alt.txt": local_ns(1985, 8, 1, 7, 30, 0),
            "Daten/Zeiten/Zukunft.txt": local_ns(2037, 12, 24, 18, 0, 0) + 1_000_000,
        }
        for path, modified in times.items():
            self.make(path, b"x", modified)
        self.make("Daten/.cache/skipped.txt")
        self.make("nicht dabei.txt")
        files = sorted([*contents, *large, *times])

        self.assertEqual(self.run_program(), files)
        self.assert_backed_up(files)
        self.assert_hash_table_names(files)
        self.assertFalse(os.path.exists(os.path.join(self.host, "Error.log")))

        state = backup_tree.snapshot(self.copy("Daten"))
        self.assertEqual(self.run_program(), [])
        self.assertEqual(backup_tree.snapshot(self.copy("Daten")), state)
        self.assert_hash_table_names(files)

    def test_a_check_finds_bad_copies_and_makes_them_anew_when_asked(self):
        names = [f"Daten/{number:03}.bin" for number in range(100)]
        for name in names:
            self.make(name, name.encode() * 1000)
        self.run_program()
        everything = backup_tree.snapshot(self.nas)
        self.assertEqual(self.run_program(ALL_COPIED, switches=("/verify", "/SHUTDOWN")), [])
        bad = self.copy(names[7])
        damaged = bytearray(read(bad))
        damaged[1234] ^= 4
        date = os.stat(bad).st_mtime_ns
        write(bad, bytes(damaged), date)
        self.assertEqual(self.run_program(BAD_COPIES, switches=("/VERIFY",)), [])
        self.assertEqual(read(bad), bytes(damaged))
        # A third of them each time: one of four checks meets it.
        codes = []
        for _ in range(4):
            self.assertEqual(self.run_program(None, switches=("/VERIFY=33",)), [])
            codes.append(self.code)
        self.assertIn(BAD_COPIES, codes)
        self.assertIn(ALL_COPIED, codes)
        self.assertEqual(self.run_program(BAD_COPIES, switches=("/VERIFY", "/REPAIR")),
                         ["Daten/007 #001.bin", "Daten/007.bin"])
        self.assert_backed_up(names)
        self.assertEqual(read(self.copy("Daten/007 #001.bin")), bytes(damaged))
        self.make("Daten/neu.bin")
        self.assertEqual(self.run_program(ALL_COPIED, switches=("/COPY", "/VERIFY")), ["Daten/neu.bin"])
        self.assertLess(set(everything), set(backup_tree.snapshot(self.nas)))

    def test_hostile_names(self):
        longest = "x" * 251 + ".txt"
        files = [
            "Daten/a\u0308.txt", "Daten/ä.txt",  # one letter, composed and decomposed: two names
            "Daten/Zalgo \u0301\u0302\u0303\u0304.txt", "Daten/👩‍👩‍👧‍👦/🏳️‍🌈.jpg", "Daten/עברית \u202e gpj.exe",
            "Daten/" + longest, "Daten/" + "ü" * 120 + "/" + "é" * 100 + ".txt",
            "Daten/ führt mit Blank.txt", "Daten/viele   Blanks.txt", "Daten/zwei..Punkte..txt", "Daten/...drei",
            "Daten/Bericht #001.txt", "Daten/Bericht.txt", "Daten/.nur Endung", "Daten/Konsole CON.txt",
        ]
        for path in files:
            self.make(path, path.encode())
        # Like our own name for a copy that is being made, and like an extension of our own.
        self.make("Daten/tabelle.new", b"no table of ours")
        self.configure(SourceFolder("Q:\\Daten", History=True))
        self.assertEqual(self.run_program(), sorted([*files, "Daten/tabelle.new"]))
        self.assert_backed_up([*files, "Daten/tabelle.new"])

        # The numbered name of an earlier copy is taken, or has no room: nothing is written over.
        newer = time.time_ns() + 10**9
        self.make("Daten/Bericht.txt", b"changed", newer)
        self.make("Daten/" + longest, b"changed", newer)
        self.run_program(SOME_FAILED)
        self.assertEqual(read(self.copy("Daten/Bericht #001.txt")), b"Daten/Bericht #001.txt")
        self.assertEqual(read(self.copy("Daten/Bericht #002.txt")), b"Daten/Bericht.txt")
        self.assertEqual(read(self.copy("Daten/" + longest)), ("Daten/" + longest).encode())
        self.assertIn(longest, read(os.path.join(self.host, "Error.log")).decode())

    def test_names_that_windows_cannot_have_take_no_other_files_place(self):
        plain = ["Daten/Punkt", "Daten/Blank", "Daten/Ordner/x.txt"]
        for path in plain:
            self.make(path, path.encode())
        # A name like that of a copy that is being made is no reason to leave a file away.
        self.make("Daten/vardeko-1-2-3-4.vardeko", b"somebody's")
        for path in ("Daten/Punkt.", "Daten/Blank ", "Daten/Ordner./x.txt", "Daten/Frage?.txt"):
            self.make(path, b"foreign")
        self.configure(SourceFolder("Q:\\Daten", History=True))
        for _ in range(2):
            # Its copy passes for a left-over, and so is made by every run.
            self.assertIn("Daten/vardeko-1-2-3-4.vardeko", self.run_program(None))
            self.assert_backed_up([*plain, "Daten/vardeko-1-2-3-4.vardeko"])

    def test_what_has_changed_is_copied_and_what_is_gone_is_kept(self):
        now = time.time_ns()
        for name in ("bleibt.txt", "wird geändert.txt", "wird gelöscht.txt"):
            self.make("Daten/" + name, b"first", now - 3600 * 10**9)
        self.run_program()

        self.make("Daten/wird geändert.txt", b"second", now - 1800 * 10**9)
        self.make("Daten/neu/neu.txt", b"new", now - 7200 * 10**9)
        os.unlink(os.path.join(self.source, "Daten/wird gelöscht.txt"))
        self.assertEqual(self.run_program(), ["Daten/neu/neu.txt", "Daten/wird geändert.txt"])
        self.assert_backed_up(["Daten/bleibt.txt", "Daten/neu/neu.txt", "Daten/wird geändert.txt"])
        self.assertEqual(read(self.copy("Daten/wird gelöscht.txt")), b"first")
        records = backup_tree.read_hash_table(os.path.join(self.host, "Vardeko.dat"))
        self.assertEqual(len(records), 4)

        # Turned back in time, a file is not newer than its copy.
        self.make("Daten/bleibt.txt", b"older", now - 9000 * 10**9)
        # A copy that is gone is made again.
        os.unlink(self.copy("Daten/neu/neu.txt"))
        self.assertEqual(self.run_program(), ["Daten/neu/neu.txt"])

    def test_history_keeps_earlier_copies_under_numbers(self):
        self.configure(SourceFolder("Q:\\Daten", History=True))
        now = time.time_ns()
        for version in range(3):
            self.make("Daten/Bericht.v2.txt", b"version %d" % version, now - (10 - version) * 60 * 10**9)
            self.make("Daten/ohne Endung", b"version %d" % version, now - (10 - version) * 60 * 10**9)
            self.run_program()
        self.assertEqual(self.copies(), ["Bericht.v2 #001.txt", "Bericht.v2 #002.txt", "Bericht.v2.txt",
                                         "ohne Endung", "ohne Endung #001", "ohne Endung #002"])
        self.assertEqual([read(self.copy("Daten/" + name)) for name in self.copies()[:3]],
                         [b"version 0", b"version 1", b"version 2"])

    def test_filters_and_rows(self):
        for path in ("Daten/a.JPG", "Daten/b.png", "Daten/c.gif", "Daten/d", "Daten/tief/e.jpg",
                     "Daten/tief/.f/g.jpg", "Flach/h.jpg", "Flach/tief/i.jpg", "Aus/j.jpg"):
            self.make(path)
        self.configure(
            SourceFolder("Q:\\Flach\\", Rekursiv=False),
            SourceFolder("Q:\\Aus", Aktive=False),
            SourceFolder("Q:\\Fehlt", Extensions=".gif", ExtensionMode="IN"),
            # The filter of the last row whose folder is there counts for all.
            SourceFolder("Q:\\Daten", Extensions=".jpg, .png", ExtensionMode="IN"))
        files = ["Daten/a.JPG", "Daten/b.png", "Daten/tief/e.jpg", "Flach/h.jpg"]
        self.assertEqual(self.run_program(FOLDER_MISSING), files)
        self.assert_hash_table_names(files)

    def test_destination_is_used_in_upper_case_without_its_last_backslash(self):
        self.make("Daten/x.txt")
        os.makedirs(os.path.join(self.nas, "BACKUP/ZIEL"))
        self.configure(SourceFolder("Q:\\Daten"), destination="n:\\Backup\\Ziel\\")
        self.run_program()
        self.assertEqual(os.listdir(self.nas), ["BACKUP"])
        self.assertEqual(os.listdir(os.path.join(self.nas, "BACKUP")), ["ZIEL"])
        self.assertTrue(backup_tree.snapshot(os.path.join(self.nas, "BACKUP/ZIEL")))

    def test_without_source_folder_table_an_empty_one_is_left(self):
        write_config(PREFIX, "N:", None)
        self.assertEqual(self.run_program(), [])
        self.assertEqual(
            read(os.path.join(config_folder(PREFIX), "NASConf.Dat")),
            b"Ver" + bytes.fromhex("8fc2f5285c8ffe3f") + bytes.fromhex("07000000")
            + bytes.fromhex("02000000 0500 0700") + b"Aktive\0"
            + bytes.fromhex("ff000000 0100 0a00") + b"Directory\0"
            + bytes.fromhex("02000000 0500 0900") + b"Rekursiv\0"
            + bytes.fromhex("ff000000 0100 0b00") + b"Extensions\0"
            + bytes.fromhex("05000000 0100 0e00") + b"ExtensionMode\0"
            + bytes.fromhex("02000000 0500 0800") + b"History\0"
            + bytes.fromhex("02000000 0500 0700") + b"Hidden\0")

    def test_the_source_folder_table_survives_a_run_byte_for_byte(self):
        self.configure(SourceFolder("Q:\\Daten", Extensions=".pdf,.docx", ExtensionMode="EX", Hidden=True),
                       SourceFolder("Q:\\Größe", Aktive=False, Rekursiv=False, History=True))
        table = os.path.join(config_folder(PREFIX), "NASConf.Dat")
        before = read(table)
        self.make("Daten/x.txt")
        self.run_program()
        self.assertEqual(read(table), before)

    def test_a_damaged_source_folder_table_ends_the_program_and_stays(self):
        self.make("Daten/x.txt")
        table = os.path.join(config_folder(PREFIX), "NASConf.Dat")
        whole = read(table)
        for damaged in (whole[:-3], whole[:50], b"", b"foreign bytes " * 20,
                        whole[:len(table_header())] + b"\1" + b"\xff" * 40):
            with self.subTest(damaged=damaged[:60]):
                write(table, damaged)
                self.run_program(NOT_STARTED)
                self.assertIn("NASConf.Dat", self.errors)
                self.assertEqual(read(table), damaged)
                self.assertEqual(os.listdir(self.nas), [])

    def test_a_damaged_hash_table_is_put_aside_and_the_copies_decide(self):
        self.make("Daten/x.txt")
        self.run_program()
        table = os.path.join(self.host, "Vardeko.dat")
        damaged = read(table)[:-1]
        write(table, damaged)
        self.make("Daten/neu.txt")
        self.run_program(SOME_FAILED)
        self.assertEqual(self.copies(), ["neu.txt", "x.txt"])
        self.assertEqual(read(os.path.join(self.host, "Vardeko #001.dat")), damaged)
        self.assert_hash_table_names(["Daten/neu.txt"])
        self.assertEqual(self.run_program(), [])

    def test_a_new_pc_takes_back_its_files_and_leaves_the_old_backup_alone(self):
        for path in ("Daten/Brief.docx", "Daten/Fotos/Oma.jpg"):
            self.make(path, b"2024", local_ns(2024, 5, 1, 12, 0, 0))
        self.run_program()
        backup = self.host
        state = backup_tree.snapshot(backup)
        # The same name and drive, and everything copied back before the first run: nothing is new.
        shutil.rmtree(config_folder(PREFIX))
        shutil.rmtree(self.source)
        shutil.copytree(os.path.join(backup, "drive_Q"), self.source)
        self.configure(SourceFolder("Q:\\Daten"))
        self.assertEqual(self.run_program(), [])
        self.assertEqual(backup_tree.snapshot(backup), state)
        # Nothing copied back: the backup stays as it is, but a file made anew takes the place of its copy.
        shutil.rmtree(self.source)
        self.make("Daten/Brief.docx", b"2026")
        self.assertEqual(self.run_program(), ["Daten/Brief.docx"])
        self.assertEqual(read(self.copy("Daten/Brief.docx")), b"2026")
        self.assertEqual(read(self.copy("Daten/Fotos/Oma.jpg")), b"2024")
        # Another drive and another name: all of it once more, beside the former backup.
        state = backup_tree.snapshot(backup)
        map_drive(PREFIX, "r", self.source)
        self.configure(SourceFolder("R:\\Daten"))
        with self.computer_name("NEUERPC"):
            self.run_program()
        self.assertEqual(sorted(os.listdir(self.nas)), sorted([os.path.basename(backup), "NEUERPC"]))
        self.assertEqual(read(os.path.join(self.nas, "NEUERPC", "drive_R", "Daten", "Brief.docx")), b"2026")
        self.assertEqual(backup_tree.snapshot(backup), state)
        # Unless the folders of the backup are given the new names.
        shutil.rmtree(os.path.join(self.nas, "NEUERPC"))
        os.rename(os.path.join(backup, "drive_Q"), os.path.join(backup, "drive_R"))
        os.rename(backup, os.path.join(self.nas, "NEUERPC"))
        with self.computer_name("NEUERPC"):
            self.assertEqual(self.run_program(), [])

    def test_a_missing_destination_stops_the_run(self):
        self.make("Daten/x.txt")
        self.configure(SourceFolder("Q:\\Daten"), destination="N:\\FEHLT")
        self.run_that_stays_open()
        self.assertEqual(os.listdir(self.nas), [])

    def test_a_file_that_cannot_be_copied_is_logged_and_the_others_are_copied(self):
        files = ["Daten/a.txt", "Daten/tief/x.txt", "Daten/z.txt"]
        for path in files:
            self.make(path)
        self.run_program()
        # A folder where the copy belongs is in the way of everybody, root included.
        self.make("Daten/kaputt.bin", b"new")
        os.mkdir(self.copy("Daten/kaputt.bin"))
        self.make("Daten/y.txt")
        files = sorted([*files, "Daten/y.txt"])
        self.assertEqual(self.run_program(SOME_FAILED), ["Daten/y.txt"])
        self.assert_backed_up(files)
        self.assert_hash_table_names(files)
        log = read(os.path.join(self.host, "Error.log")).decode()
        # Date and time as German Windows writes them.
        self.assertRegex(log, r"\A\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] Q:\\Daten\\kaputt\.bin Copy Error\r\n\Z")

        self.assertEqual(self.run_program(SOME_FAILED), [])
        log = read(os.path.join(self.host, "Error.log")).decode()
        self.assertEqual(log.count(" Copy Error\r\n"), 2)

    def test_links_lead_neither_in_circles_nor_into_the_backup(self):
        self.make("Daten/tief/x.txt")
        os.symlink("..", os.path.join(self.source, "Daten/tief/zurück"))
        self.make("anderswo/y.txt")
        os.symlink("../../anderswo", os.path.join(self.source, "Daten/tief/hinüber"))
        os.symlink(self.nas, os.path.join(self.source, "Daten/tief/NAS"))
        self.run_program()
        self.run_program()
        self.assertEqual(self.copies(), ["tief/hinüber/y.txt", "tief/x.txt"])
        # The backup as a source, by its own name and by another one.
        map_drive(PREFIX, "r", self.host)
        self.configure(SourceFolder("R:\\drive_Q\\Daten"), SourceFolder("N:\\"))
        self.assertEqual(self.run_program(SOME_FAILED), [])

    def test_rows_are_read_as_meant_and_each_target_is_copied_once(self):
        self.make("Daten/sub/x.txt")
        rows = [' "Q:/Daten/" ', "\\\\?\\q:\\Daten\\sub", "q:\\DATEN", "Daten", "Q:\\fehlt"]
        self.configure(*(SourceFolder(row, History=True) for row in rows))
        self.run_program(None)
        self.assertEqual(self.copies(), ["sub/x.txt"])

    def test_names_that_are_one_at_the_destination_are_told(self):
        self.make("Daten/Brief.txt", b"one")
        self.make("Daten/brief.txt", b"the other")
        (first,) = self.run_program(SOME_FAILED)
        self.assert_backed_up([first])
        self.assertEqual(self.run_program(SOME_FAILED), [])
        self.assert_backed_up([first])
