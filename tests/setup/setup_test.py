"""The setup, and the way from one version to the next, with the real programs.

usage: tests/setup/own_network.sh HOST scripts/in_wine.sh python3 tests/setup/setup_test.py [NAME...]
       HOST: the maker's server, as the program was built with it
Needs what scripts/package.sh makes, and the target setup_test_programs.
"""
import glob
import os
import re
import shutil
import signal
import sys
import time
import unittest
import xml.etree.ElementTree

import installation
from installation import (DESKTOP, DRIVE, FILES, FOLDER, MENU, NEXT, SCHEDULER, SHORT, TASKS, TOOLS, USER, built,
                          clean, content, entry, hand, install, installed_program, run, setup_of, start, uninstall, wait_until)

from case_report import run_cases
from update_round_trip import UpdateRoundTrip
from release_cases import Release
from write_config import SourceFolder, map_drive, write_config

OWN_TASK = f"Vardeko Sicherung ({os.path.basename(USER)})"
SWITCHES, NEWER, RUNNING, NOT_WRITTEN, NO_TASK = 7, 4, 3, 6, 8


class Setup(unittest.TestCase):
    def setUp(self):
        clean()

    def assert_installed(self, version):
        self.assertEqual(sorted(os.listdir(FOLDER)), FILES)
        self.assertEqual(content(os.path.join(FOLDER, "Vardeko.exe")), content(built(version)))

    def test_nothing_is_done_unasked(self):
        self.assertEqual(install(SHORT), 0)
        self.assert_installed(SHORT)
        self.assertTrue(os.path.exists(os.path.join(DRIVE, "ProgramData", MENU)))
        self.assertFalse(os.path.exists(DESKTOP))
        self.assertEqual(os.listdir(TASKS), [])
        values = entry("HKLM")
        self.assertEqual((values["DisplayName"], values["DisplayVersion"]), ("Vardeko", SHORT))
        taken = sum(os.path.getsize(os.path.join(FOLDER, name)) for name in FILES) // 1024
        self.assertAlmostEqual(int(values["EstimatedSize"], 16), taken, delta=taken // 10)
        self.assertEqual(values["QuietUninstallString"], r'"C:\Program Files\Vardeko\Entfernen.exe" /S')
        write_config(installation.PREFIX, "N:", [])
        settings = os.path.join(DRIVE, "ProgramData", "Vardeko")
        self.assertEqual(uninstall(), 0)
        self.assertFalse(os.path.exists(FOLDER))
        self.assertFalse(os.path.exists(os.path.join(DRIVE, "ProgramData", MENU)))
        self.assertEqual(sorted(os.listdir(settings)), ["NASConf.Dat", "NASConf.ini"])

    def test_everything_that_can_be_asked_for(self):
        os.rename(SCHEDULER, SCHEDULER + ".wine")
        self.addCleanup(os.replace, SCHEDULER + ".wine", SCHEDULER)
        shutil.copyfile(os.path.join(TOOLS, "schtasks.exe"), SCHEDULER)
        self.assertEqual(install(SHORT, "/TASK=7:05", "/WAKE", "/DESKTOP"), 0)
        self.assertTrue(os.path.exists(DESKTOP))
        log = content(SCHEDULER.replace(".exe", ".log")).decode("utf-8")
        self.assertRegex(log, rf"^/Create\|/TN\|{re.escape(OWN_TASK)}\|/XML\|.*\|/F\n$")
        task = xml.etree.ElementTree.fromstring(content(SCHEDULER.replace(".exe", ".xml")))
        values = {element.tag.split("}")[1]: element.text for element in task.iter()}
        self.assertRegex(values["StartBoundary"], r"^20\d\d-[01]\d-[0-3]\dT07:05:00$")
        expected = {"DaysInterval": "1", "LogonType": "InteractiveToken", "RunLevel": "LeastPrivilege",
                    "Command": r'"C:\Program Files\Vardeko\Vardeko.exe"', "Arguments": "/COPY", "WakeToRun": "true",
                    "DisallowStartIfOnBatteries": "false", "StopIfGoingOnBatteries": "false",
                    "StartWhenAvailable": "true", "Enabled": "true"}
        self.assertEqual({name: values.get(name) for name in expected}, expected)
        self.assertTrue(values["UserId"].endswith(os.path.basename(USER)))
        # The program is installed even where the scheduler refuses.
        with open(SCHEDULER.replace(".exe", ".fail"), "wb"):
            self.assertEqual(install(NEXT, "/TASK=20:00"), NO_TASK)
        self.assert_installed(NEXT)
        settings = os.path.join(DRIVE, "ProgramData", "Vardeko")
        write_config(installation.PREFIX, "N:", [])
        self.assertEqual(uninstall("/SETTINGS"), 0)
        self.assertFalse(os.path.exists(settings))
        self.assertFalse(os.path.exists(DESKTOP))

    def test_the_tasks_of_this_program_go_with_it(self):
        self.assertEqual(install(SHORT, "/TASK=20:00"), 0)
        self.assertEqual(os.listdir(TASKS), [OWN_TASK])
        self.assertEqual(install(NEXT), 0)
        self.assertEqual(os.listdir(TASKS), [OWN_TASK], "an update without the switch keeps the task")
        for user, folder in (("Anna", "Program Files"), ("Otto", "Portabel")):
            with open(os.path.join(TASKS, f"Vardeko Sicherung ({user})"), "w", encoding="utf-16") as file:
                file.write(f'<Exec>\n<Command>"C:\\{folder}\\Vardeko\\Vardeko.exe"</Command></Exec>\n')
        shutil.copy(os.path.join(TASKS, OWN_TASK), os.path.join(TASKS, "Vardeko"))
        self.assertEqual(uninstall(), 0)
        self.assertEqual(sorted(os.listdir(TASKS)), ["Vardeko", "Vardeko Sicherung (Otto)"])

    def test_for_one_user_in_a_folder_of_his_own(self):
        self.assertEqual(install(SHORT, "/CURRENTUSER", r"/D=C:\Mein", r"Ordner\Vardeko"), 0)
        folder = os.path.join(DRIVE, "Mein Ordner", "Vardeko")
        self.assertEqual(sorted(os.listdir(folder)), FILES)
        self.assertEqual(entry("HKCU")["InstallLocation"], r"C:\Mein Ordner\Vardeko")
        self.assertIsNone(entry("HKLM"))
        self.assertEqual(install(NEXT), 0)  # where it is, without being told
        self.assertEqual(content(os.path.join(folder, "Vardeko.exe")), content(built(NEXT)))
        with open(os.path.join(folder, "Brief.txt"), "w", encoding="ascii") as file:
            file.write("bleibt")
        self.assertEqual(uninstall(folder=folder), 0)
        self.assertEqual(os.listdir(folder), ["Brief.txt"])

    def test_a_command_line_that_is_not_understood_changes_nothing(self):
        for switch in ("/TASK=25:00", "/TASK=acht", "/TASKS=20:00", "/s /DESKTOP=1"):
            with self.subTest(switch):
                self.assertEqual(install(SHORT, *switch.split()), SWITCHES)
                self.assertFalse(os.path.exists(FOLDER))

    def test_a_newer_version_stays_unless_its_user_says_otherwise(self):
        self.assertEqual(install(NEXT), 0)
        self.assertEqual(install(SHORT), NEWER)
        self.assert_installed(NEXT)
        self.assertEqual(install(SHORT, "/OLDER"), 0)
        self.assert_installed(SHORT)
        self.assertEqual(install(NEXT), 0)
        older = start(setup_of(SHORT))
        hand("click", f"Setup von Vardeko {SHORT}", "Nein")
        self.assertEqual(older.wait(60), NEWER)
        older = start(setup_of(SHORT))
        hand("click", f"Setup von Vardeko {SHORT}", "Ja")
        hand("click", f"Setup von Vardeko {SHORT}", "Installieren")
        hand("click", f"Setup von Vardeko {SHORT}", "Fertig")
        self.assertEqual(older.wait(60), 0)
        self.assert_installed(SHORT)


class BadLuck(unittest.TestCase):
    """Whatever happens to a set-up, the program is the old one or the new one, and works."""

    def setUp(self):
        clean()
        self.assertEqual(install(SHORT), 0)
        self.program = os.path.join(FOLDER, "Vardeko.exe")
        self.fresh = self.program + ".new"

    def test_killed_at_every_stage(self):
        old, new = content(built(SHORT)), content(built(NEXT))
        began = time.monotonic()
        self.assertEqual(install(NEXT), 0)
        duration = time.monotonic() - began
        stages = [lambda: os.path.exists(os.path.join(FOLDER, "Entfernen.exe.new")),
                  lambda: os.path.exists(os.path.join(FOLDER, "Anleitung.html.new")),
                  lambda: os.path.exists(self.fresh),
                  lambda: os.path.exists(self.fresh) and os.path.getsize(self.fresh) == len(new),
                  lambda: os.stat(self.program).st_ino != inode,
                  lambda: not os.path.exists(os.path.join(FOLDER, "Entfernen.exe.new"))
                  and os.stat(self.program).st_ino != inode]
        stages += [lambda share=share: time.monotonic() - began > duration * share / 6 for share in range(1, 6)]
        seen = set()
        for number, stage in enumerate(stages):
            shutil.copyfile(built(SHORT), self.program)
            inode = os.stat(self.program).st_ino
            began = time.monotonic()
            setup = start(setup_of(NEXT), "/S")
            while not stage() and setup.poll() is None:
                time.sleep(0.0005)
            setup.send_signal(signal.SIGKILL)
            setup.wait()
            time.sleep(0.05)  # for the server to notice
            left = content(self.program)
            self.assertIn(left, (old, new), f"half a program after stage {number}")
            seen.add(left == new)
        self.assertEqual(seen, {False, True})
        self.assertEqual(install(NEXT), 0)
        self.assertEqual(sorted(os.listdir(FOLDER)), FILES)
        self.assertEqual(content(self.program), new)

    def test_two_at_the_same_time(self):
        setups = [start(setup_of(NEXT), "/S") for _ in range(2)]
        codes = {setup.wait(60) for setup in setups}
        self.assertTrue(0 in codes and codes <= {0, RUNNING}, codes)
        self.assertEqual(sorted(os.listdir(FOLDER)), FILES)
        self.assertEqual(content(self.program), content(built(NEXT)))

    def test_no_room_and_no_right_to_write(self):
        def full():
            os.symlink("/dev/full", self.fresh)

        def locked():
            os.mkdir(self.fresh)

        for trouble in (full, locked):
            with self.subTest(trouble.__name__):
                trouble()
                setup = start(setup_of(NEXT))
                hand("click", f"Setup von Vardeko {NEXT}", "Installieren")
                wait_until(lambda: "kann nicht geschrieben werden" in (hand("read", f"Setup von Vardeko {NEXT}")))
                shown = hand("read", f"Setup von Vardeko {NEXT}")
                self.assertIn("Es wurde nichts geändert", shown)
                hand("click", f"Setup von Vardeko {NEXT}", "OK")
                hand("click", f"Setup von Vardeko {NEXT}", "Abbrechen")
                self.assertEqual(setup.wait(60), NOT_WRITTEN)
                self.assertEqual(content(self.program), content(built(SHORT)))
                # Wine removes no link to a device.
                (os.rmdir if os.path.isdir(self.fresh) else os.unlink)(self.fresh)
                self.assertEqual(sorted(os.listdir(FOLDER)), FILES)


class WhileItRuns(unittest.TestCase):
    def setUp(self):
        clean()
        self.assertEqual(install(SHORT), 0)
        self.folders = {letter: os.path.join(installation.PREFIX, "setup", letter) for letter in "qn"}
        for letter, folder in self.folders.items():
            shutil.rmtree(folder, ignore_errors=True)
            os.makedirs(folder)
            map_drive(installation.PREFIX, letter, folder)

    def version(self):
        program = content(os.path.join(FOLDER, "Vardeko.exe"))
        return next(version for version in (SHORT, NEXT) if program == content(built(version)))

    def test_an_idle_program_is_asked_to_end(self):
        program = installed_program()
        wait_until(program.window)
        self.assertEqual(install(NEXT), 0)
        self.assertEqual(program.wait(60), 0)
        self.assertEqual(self.version(), NEXT)

    def test_a_run_is_waited_for(self):
        for number in range(1000):
            with open(os.path.join(self.folders["q"], f"Brief {number}.txt"), "wb") as file:
                file.write(b"Guten Tag")
        write_config(installation.PREFIX, "N:", [SourceFolder("Q:\\")])
        program = installed_program("/COPY")
        wait_until(program.window)
        # The run has not begun yet, but its task has started it.
        setup = start(setup_of(NEXT), "/S")
        wait_until(lambda: glob.glob(os.path.join(self.folders["n"], "*", "drive_Q", "*.txt")))
        (copies,) = glob.glob(os.path.join(self.folders["n"], "*", "drive_Q"))
        self.assertEqual(self.version(), SHORT)
        self.assertTrue(program.running())
        self.assertEqual(program.wait(60), 0, "the run came to its end and nothing is left out")
        self.assertEqual(setup.wait(60), 0)
        self.assertEqual(len(os.listdir(copies)), 1000)
        self.assertEqual(self.version(), NEXT)

    def test_who_cannot_be_asked_is_left_alone(self):
        """A run that waits for its user, and a program that does not answer."""
        write_config(installation.PREFIX, "M:", [SourceFolder("Q:\\")])
        program = installed_program("/COPY")
        wait_until(program.window)
        time.sleep(2)
        self.assertEqual(install(NEXT, "/WAIT=1"), RUNNING)
        self.assertEqual(run(os.path.join(FOLDER, "Entfernen.exe"), "/S", "/WAIT=1"), 0)
        time.sleep(2)
        program.process.send_signal(signal.SIGSTOP)
        self.assertEqual(install(NEXT, "/WAIT=1"), RUNNING)
        program.process.send_signal(signal.SIGCONT)
        self.assertTrue(program.running())
        self.assertEqual(sorted(os.listdir(FOLDER)), FILES)
        self.assertEqual(self.version(), SHORT)
        # The page goes on by itself when its user has ended it.
        setup = start(setup_of(NEXT))
        hand("click", f"Setup von Vardeko {NEXT}", "Installieren")
        wait_until(lambda: "Vardeko sichert gerade" in hand("read", f"Setup von Vardeko {NEXT}"))
        program.close()
        hand("click", f"Setup von Vardeko {NEXT}", "Fertig")
        self.assertEqual(setup.wait(60), 0)
        self.assertEqual(self.version(), NEXT)


if __name__ == "__main__":
    sys.exit(run_cases([Setup, BadLuck, WhileItRuns, UpdateRoundTrip, Release], sys.argv[1:]))
