"""Under "/COPY" nobody is there: whatever is wrong, the program ends by itself and says so by its exit code."""
import contextlib
import glob
import os
import socket
import subprocess
import time

import backup_tree
from fixture import ALL_COPIED, NOT_STARTED, ONLOOKER, PREFIX, SOME_FAILED, WholeRun, read, write
from write_config import config_folder

# The waits that every run has: 1.5 s before it begins, ticks of a second while it copies.
USUAL_SECONDS = 15
# In the program's own file of settings.
UPDATE_SERVER = "updates.vardeko.example"
SERVER_ADDRESS = "127.0.0.53"


class UnattendedCases(WholeRun):
    def setUp(self):
        super().setUp()
        self.files = [f"Daten/{number}.txt" for number in range(20)]
        for path in self.files:
            self.make(path, path.encode())

    def run_unattended(self, what, expected, via=()):
        """One run with an onlooker; prints and returns the rows of its list and the new lines of Error.log.

        The window closes before anybody can read the very last rows."""
        self.error_log()
        onlooker = subprocess.Popen(["wine", ONLOOKER, "rows"], stdin=subprocess.DEVNULL,
                                    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        began = time.monotonic()
        self.run_program(expected, via)
        seconds = time.monotonic() - began
        rows = onlooker.communicate(timeout=20)[0].decode("utf-8").replace("\r", "").splitlines()
        print(f"  {what}: {seconds:.1f} s, exit code {expected}")
        rows += self.error_log()
        for row in rows:
            # Copied files are told by their paths alone.
            if not row.startswith(("Start:", "Dateivergleich")) and (row[1:3] != ":\\" or " " in row):
                print(f"    {row}")
        self.assertLess(seconds, USUAL_SECONDS)
        self.assertEqual(self.left_beside(), [])
        return rows

    def error_log(self):
        """Takes the lines from the log, without their dates."""
        lines = []
        for path in glob.glob(os.path.join(self.nas, "*", "Error.log")):
            if os.path.isfile(path):
                lines += [line.split("] ", 1)[1] for line in read(path).decode().splitlines()]
                os.unlink(path)
        return lines

    @contextlib.contextmanager
    def small_nas(self, kilobytes):
        if os.geteuid() != 0:
            self.skipTest("a small file system takes root to mount")
        mount = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={kilobytes}k", "tmpfs", self.nas],
                               capture_output=True, check=False)
        if mount.returncode != 0:
            self.skipTest(f"no file system can be mounted here: {mount.stderr.decode()}")
        try:
            yield
        finally:
            subprocess.run(["umount", "-l", self.nas], check=True)

    def test_a_file_too_large_for_the_nas_fails_alone(self):
        with self.small_nas(1024):
            self.make("Daten/groß.bin", b"x" * (3 << 20))
            rows = self.run_unattended("NAS without room for one file", SOME_FAILED)
            self.assertTrue(any("groß.bin" in row for row in rows), rows)
            self.assert_backed_up(self.files)
            self.assert_hash_table_names(self.files)

    def test_a_full_nas(self):
        with self.small_nas(256):
            self.run_program()
            host = self.host
            state = backup_tree.snapshot(host)
            with contextlib.suppress(OSError), open(os.path.join(self.nas, "voll"), "wb", 0) as file:
                while True:
                    file.write(bytes(4096))
            for path in self.files:
                self.make(path, b"changed " * 100, time.time_ns() + 10**9)
            self.run_unattended("NAS full", SOME_FAILED)
            self.assertEqual(backup_tree.written(state, backup_tree.snapshot(host)), [])
            os.unlink(os.path.join(self.nas, "voll"))
            self.run_program()
            self.assert_backed_up(self.files)

    def test_a_source_that_another_program_keeps_to_itself(self):
        with self.held_open("Q:\\Daten\\7.txt"):
            rows = self.run_unattended("source file held open", SOME_FAILED)
        self.assertTrue(any("7.txt" in row for row in rows), rows)
        self.assert_backed_up([path for path in self.files if not path.endswith("/7.txt")])
        self.run_program()
        self.assert_backed_up(self.files)

    def test_a_copy_that_another_program_keeps_to_itself(self):
        self.run_program()
        self.make("Daten/7.txt", b"changed", time.time_ns() + 10**9)
        copy = "N:" + self.copy("Daten/7.txt")[len(self.nas):].replace("/", "\\")
        with self.held_open(copy):
            self.run_unattended("copy held open", SOME_FAILED)
        self.assertEqual(read(self.copy("Daten/7.txt")), b"Daten/7.txt")
        self.run_program()
        self.assert_backed_up(self.files)

    def test_a_password_that_cannot_be_decrypted(self):
        ini = os.path.join(config_folder(PREFIX), "NASConf.ini")
        write(ini, read(ini).replace(b"CONNECT=0", b"CONNECT=1\r\nUSER=/HsuRte+wdQImKS9cFjgPg==\r\nPASS=foreign"))
        rows = self.run_unattended("password undecryptable", SOME_FAILED)
        self.assertTrue(any(row.startswith("Das Passwort in ") for row in rows), rows)
        self.assertEqual(os.listdir(self.nas), [])

    def test_damaged_settings(self):
        """What can still be read of them counts; without a destination the run cannot begin."""
        ini = os.path.join(config_folder(PREFIX), "NASConf.ini")
        whole = read(ini)
        noise = bytes(range(256)) * 4
        for damaged in (noise + b"\r\n" + whole + noise, whole[:-4]):
            with self.subTest(damaged=damaged[-20:]):
                write(ini, damaged)
                self.run_unattended("NASConf.ini damaged", ALL_COPIED)
                self.assert_backed_up(self.files)
                self.assertEqual(read(ini), damaged)
        write(ini, noise)
        self.run_that_stays_open()
        self.assertEqual(read(ini), noise)

    def test_a_damaged_source_folder_table(self):
        table = os.path.join(config_folder(PREFIX), "NASConf.Dat")
        write(table, read(table)[:-3])
        began = time.monotonic()
        self.run_program(NOT_STARTED)
        print(f"  NASConf.Dat damaged: {time.monotonic() - began:.1f} s, exit code {NOT_STARTED}\n    {self.errors}")

    def test_a_damaged_hash_table(self):
        self.run_program()
        table = os.path.join(self.host, "Vardeko.dat")
        write(table, read(table)[:-1])
        damaged = read(table)
        self.run_unattended("Vardeko.dat damaged", SOME_FAILED)
        self.assertEqual(read(os.path.join(self.host, "Vardeko #001.dat")), damaged)

    def test_a_hash_table_and_a_log_that_cannot_be_written(self):
        self.run_program()
        table, log = (os.path.join(self.host, name) for name in ("Vardeko.dat", "Error.log"))
        before = read(table)
        self.make("Daten/neu.txt", b"new")
        self.make("Daten/kaputt.bin", b"new")
        os.mkdir(self.copy("Daten/kaputt.bin"))
        os.mkdir(log)
        os.mkdir(table + ".new")
        self.run_unattended_with(table)
        self.assertEqual(read(table), before)
        self.assert_backed_up([*self.files, "Daten/neu.txt"])

    def run_unattended_with(self, table):
        try:
            self.run_unattended("Vardeko.dat and Error.log cannot be written", SOME_FAILED)
        finally:
            os.rmdir(table + ".new")

    def test_an_update_server_that_is_silent(self):
        """One that takes the connection and then says nothing."""
        with socket.create_server((SERVER_ADDRESS, 443)) as server:
            self.run_with_update_server("update server silent")
            server.settimeout(0)
            server.accept()[0].close()  # it did ask

    def test_an_update_server_at_which_nobody_answers(self):
        with contextlib.ExitStack() as open_sockets:
            server = open_sockets.enter_context(socket.create_server((SERVER_ADDRESS, 443), backlog=0))
            # Where no further connection has room to wait, the system leaves them without an answer.
            for _ in range(3):
                waiting = open_sockets.enter_context(socket.socket())
                waiting.setblocking(False)
                waiting.connect_ex(server.getsockname())
            self.run_with_update_server("update server dead")

    def run_with_update_server(self, what):
        if os.geteuid() != 0:
            self.skipTest("it takes root to give the program another list of hosts")
        hosts = os.path.join(self.work, "hosts")
        write(hosts, f"127.0.0.1 localhost\n{SERVER_ADDRESS} {UPDATE_SERVER}\n".encode())
        self.run_unattended(what, ALL_COPIED,
                            via=("unshare", "-m", "sh", "-c", 'mount --bind "$0" /etc/hosts && exec "$@"', hosts))
        self.assert_backed_up(self.files)
