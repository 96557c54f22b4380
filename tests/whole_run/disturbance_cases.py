"""Runs that are killed, and trees that change while they are copied."""
import itertools
import os
import random
import threading
import time

from fixture import ALL_COPIED, SOME_FAILED, WholeRun, read, write
from program import Program

# How often a run is killed; the long form takes 50.
KILLS = int(os.environ.get("VARDEKO_KILLS", "4"))
MOVING_FILES = 600


class DisturbanceCases(WholeRun):
    def test_a_kill_at_any_moment_is_repaired_by_the_next_run(self):
        files = [f"Daten/viele/{number:03}.txt" for number in range(400)]
        for number in range(KILLS):
            for path in files:
                self.make(path, f"{path} {number}".encode() * 50)
            write(os.path.join(self.source, "Daten/groß.bin"), os.urandom(1 << 20) * 80)
            program = Program("/COPY")
            # It waits 1.5 s before it begins.
            time.sleep(1.6 + random.random() * 0.8)
            program.process.kill()
            program.process.wait()
            self.run_program()
            self.assert_backed_up([*files, "Daten/groß.bin"])
            self.assert_hash_table_names([*files, "Daten/groß.bin"])
            self.assertEqual(self.left_beside(), [])

    def test_a_nas_that_goes_away_in_mid_run(self):
        if not os.environ.get("VARDEKO_LONG"):
            self.skipTest("takes a minute: ./test build-windows-x64 long-power-cuts")
        self.make("Daten/alt.txt")
        self.run_program()
        table = os.path.join(self.host, "Vardeko.dat")
        table_before = read(table)
        files = [f"Daten/viele/{number // 100}/{number:04}.txt" for number in range(3000)]
        for path in files:
            self.make(path, path.encode() * 500)
        program = Program("/COPY")
        while program.running() and not os.path.exists(self.copy(files[300])):
            time.sleep(0.002)
        os.rename(self.nas, self.nas + " fort")
        began = time.monotonic()
        code = program.wait(100)
        seconds = time.monotonic() - began
        os.rename(self.nas + " fort", self.nas)
        copied = sum(not path.endswith(".vardeko") for path in self.copies()) - 1
        print(f"  gone after {copied} of {len(files)} files: {seconds:.1f} s to the end, exit code {code}")
        self.assertEqual(code, SOME_FAILED)
        self.assertLess(copied, len(files))
        self.assertTrue(55 < seconds < 75, "a drop-out is waited for, a minute long")
        self.assertEqual(read(table), table_before)
        # Copies that never got their record are known by their own date.
        self.assertEqual(len(self.run_program()), len(files) - copied)
        self.assert_backed_up(["Daten/alt.txt", *files])
        self.assertEqual(self.left_beside(), [])

    def test_a_tree_in_motion_is_copied_as_far_as_it_stands_still(self):
        still = [f"Daten/still/{number:03}.txt" for number in range(MOVING_FILES)]
        for path in still:
            self.make(path, path.encode() * 200)
        for number in range(MOVING_FILES):
            self.make(f"Daten/bewegt/{number:03}.txt", b"first" * 2000)
        done = threading.Event()
        mover = threading.Thread(target=self.move_files, args=(done,))
        program = Program("/COPY")
        # It waits 1.5 s before it begins.
        time.sleep(1.3)
        mover.start()
        code = program.wait(90)
        done.set()
        mover.join()
        self.assertIn(code, (ALL_COPIED, SOME_FAILED))
        self.assert_backed_up(still)
        self.assertEqual(self.left_beside(), [])

        # What has come to rest since is right after the next run, whatever the first one saw of it.
        self.run_program()
        moved = sorted(os.path.join("Daten/bewegt", name)
                       for name in os.listdir(os.path.join(self.source, "Daten/bewegt")))
        self.assert_backed_up([*still, *moved])

    def move_files(self, done):
        """Lets files vanish, grow, shrink, get other names and other contents, until it is told to stop."""
        folder = os.path.join(self.source, "Daten/bewegt")
        change = random.Random(1)
        # Never a name twice: a file that takes the place of a newer one is not copied over its copy.
        numbers = itertools.count(MOVING_FILES)
        while not done.is_set():
            name = change.choice(os.listdir(folder))
            path = os.path.join(folder, name)
            match change.randrange(5):
                case 0:
                    os.unlink(path)
                    write(os.path.join(folder, f"neu {next(numbers)}.txt"), b"new")
                case 1:
                    with open(path, "ab") as file:
                        file.write(b"grown" * change.randrange(20000))
                case 2:
                    os.truncate(path, os.path.getsize(path) // 2)
                case 3:
                    os.rename(path, os.path.join(folder, f"umbenannt {next(numbers)}.txt"))
                case 4:
                    write(path + ".neu", b"replaced" * change.randrange(5000))
                    os.replace(path + ".neu", path)
            time.sleep(0.001)
