"""The destination's power fails: what its disk holds then is whole, and the next run brings the rest."""
import os
import random
import shutil
import subprocess
import time

from fault_fixture import LONG, FaultRun
from fixture import ALL_COPIED, PREFIX, read
from program import Program
from write_config import map_drive

# The long form does 100, up to 45 s after the end of a run.
CUTS, CUTS_A_RUN, LONGEST_WAIT = (100, 5, 45) if LONG else (5, 2, 4)


class PowerCutCases(FaultRun):
    def setUp(self):
        super().setUp()
        # Wine ends its desktop a second after the last program, and who comes at that moment finds no window.
        holder = subprocess.Popen(["wine", "notepad"], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(holder.wait)
        self.addCleanup(holder.kill)

    def test_after_a_power_cut_every_copy_is_whole(self):
        seed = int(os.environ.get("VARDEKO_SEED", random.randrange(10**6)))
        print(f"  seed {seed}")
        self.random = random.Random(seed)
        left, kinds = CUTS, ["xfs", "ext4", "btrfs"]
        while left > 0:
            number = min(CUTS_A_RUN, left)
            left -= number
            with self.subTest(kind=kinds[0]):
                self.cut_a_run(kinds[0], number)
            kinds.append(kinds.pop(0))

    def cut_a_run(self, kind, number):
        disk = self.disk(kind)
        shutil.rmtree(os.path.join(self.source, "Daten"), ignore_errors=True)
        old = {}
        for path in self.make_many(60, folders=5):
            old[path] = read(os.path.join(self.source, path))
        self.run_program()
        subprocess.run(["sync", "-f", disk.where], check=True)
        files = self.make_many(80, folders=5, content=self.random.choice(("again", "now longer")), age=60)
        new = [self.copy(path) for path in files if path not in old]
        program = Program("/COPY")
        cuts = []
        for copied in sorted(self.random.sample(range(1, len(new)), number // 2)):
            while program.running() and sum(map(os.path.exists, new)) < copied:
                time.sleep(0.002)
            cuts.append((f"after {copied} new files", disk.cut()))
        self.assertEqual(program.wait(60), ALL_COPIED)
        ended = time.monotonic()
        for wait in sorted(self.random.uniform(0.2, LONGEST_WAIT) for _ in range(number // 2, number)):
            time.sleep(max(0, wait - (time.monotonic() - ended)))
            cuts.append((f"{wait:.1f} s after the end", disk.cut()))
        disk.close()
        for when, image in cuts:
            with self.subTest(kind=kind, cut=when):
                disk.open_cut(image)
                try:
                    self.check_cut(files, old, f"{kind}, {when}")
                finally:
                    disk.close()
        self.disks.remove(disk)
        disk.remove()

    def check_cut(self, files, old, when):
        broken, missing, of_new = [], [], 0
        for path in files:
            try:
                found = read(self.copy(path))
            except FileNotFoundError:
                missing.append(path)
                continue
            is_new = found == read(os.path.join(self.source, path))
            of_new += is_new
            if not is_new and found != old.get(path):
                broken.append(path)
        print(f"  {when}: {of_new} new, {len(missing)} missing, {len(broken)} broken of {len(files)}")
        self.assertEqual([path for path in missing if path in old], [], "the earlier copies are gone")
        self.assertEqual(broken, [], "neither the whole old nor the whole new file")
        map_drive(PREFIX, "n", self.nas)
        self.run_program()
        self.assert_backed_up(files)
        self.assertEqual(self.copies(), sorted(path.removeprefix("Daten/") for path in files))
