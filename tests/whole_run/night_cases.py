"""Backups night after night, while by day the source and the backup change at random."""
import hashlib
import os
import random
import shutil

from fixture import ALL_COPIED, SOME_FAILED, WholeRun, read, write
from write_config import SourceFolder

# The long form takes 50.
NIGHTS = int(os.environ.get("VARDEKO_NIGHTS", "4"))
STEMS = ("a", "B", "ä", "Ä", "e\u0301", "é", "ß", "ss", "I", "ı", "İ", "Σ", "ς", "\u212a", "ﬀ", "日本", "😀", "l" * 60,
         "#001", "b#001", ".punkt", "~z", "mit blank", "n'", "&", "%TEMP%", "[x]", "{y}", "1;2", ",k", "@", "=")
ENDS = ("", ".txt", ".TXT", ".#001", ".txt#001", ".tmp", ".neu")
SIZES = (0, 1, 4096, 70000)


class NightCases(WholeRun):
    def test_night_after_night_every_file_has_its_copy(self):
        self.nights(SourceFolder("Q:\\Daten"))

    def test_night_after_night_history_keeps_what_was_once_copied(self):
        self.nights(SourceFolder("Q:\\Daten", History=True))

    def nights(self, row):
        seed = random.randrange(10**6)
        print(f"  seed {seed}")
        self.random = random.Random(seed)
        self.clock = 1_500_000_000
        self.names = set()
        self.configure(row)
        os.makedirs(os.path.join(self.source, "Daten"))
        for _ in range(40):
            self.add_file()
        kept = set()
        self.next_code = ALL_COPIED
        for _ in range(NIGHTS):
            self.run_program(self.next_code)
            self.next_code = ALL_COPIED
            self.assert_backed_up([path for path in self.paths(os.path.isfile)
                                   if "/." not in os.path.dirname(path)])
            contents = self.copied_contents()
            if row.History:
                self.assertTrue(kept <= contents, "an earlier copy is lost")
                kept = contents
            else:
                self.spoil_backup()
            for _ in range(self.random.choice((1, 5, 20))):
                self.random.choice((self.add_file, self.change_file, self.change_file, self.delete_file,
                                    self.rename_file, self.add_folder, self.delete_folder))()
        self.run_program(self.next_code)
        self.assertEqual(self.run_program(), [], "copied without a change")
        self.assertEqual(self.left_beside(), [])

    def paths(self, wanted):
        return [os.path.relpath(os.path.join(at, name), self.source)
                for at, folders, files in os.walk(self.source) for name in folders + files
                if wanted(os.path.join(at, name))]

    def copied_contents(self):
        top = os.path.join(self.host, "drive_Q", "Daten")
        return {hashlib.sha256(read(os.path.join(top, path))).digest() for path in self.copies()}

    def write_file(self, path):
        """Newer than any file before, as a copy is replaced only when its source is newer."""
        self.clock += self.random.randrange(3, 5000)
        content = os.urandom(self.random.choice(SIZES))
        write(os.path.join(self.source, path), content,
              self.clock * 10**9 + self.random.randrange(10**7) * 100)

    def free_name(self, folder):
        """Never a name twice: the backup may still hold a newer file of that name, or a folder."""
        while True:
            path = f"{folder}/{self.random.choice(STEMS)}{self.random.randrange(1000)}{self.random.choice(ENDS)}"
            if path.upper() not in self.names:
                self.names.add(path.upper())
                return path

    def add_file(self):
        self.write_file(self.free_name(self.random.choice(self.paths(os.path.isdir))))

    def add_folder(self):
        folder = self.free_name(self.random.choice(self.paths(os.path.isdir)))
        os.makedirs(os.path.join(self.source, folder))
        self.write_file(self.free_name(folder))

    def change_file(self):
        if files := self.paths(os.path.isfile):
            self.write_file(self.random.choice(files))

    def delete_file(self):
        if files := self.paths(os.path.isfile):
            os.unlink(os.path.join(self.source, self.random.choice(files)))

    def rename_file(self):
        if files := self.paths(os.path.isfile):
            path = self.random.choice(files)
            os.rename(os.path.join(self.source, path),
                      os.path.join(self.source, self.free_name(os.path.dirname(path))))

    def delete_folder(self):
        if folders := [path for path in self.paths(os.path.isdir) if path != "Daten"]:
            shutil.rmtree(os.path.join(self.source, self.random.choice(folders)))

    def spoil_backup(self):
        """Copies vanish from the backup, or its hash table does, or is cut short; the next run tells of a table."""
        copies = self.copies()
        for path in self.random.sample(copies, min(3, len(copies))):
            os.unlink(os.path.join(self.host, "drive_Q", "Daten", path))
        table = os.path.join(self.host, "Vardeko.dat")
        match self.random.randrange(4):
            case 0:
                os.unlink(table)
                self.next_code = SOME_FAILED
            case 1:
                content = read(table)
                write(table, content[:self.random.randrange(len(content))])
                self.next_code = SOME_FAILED
