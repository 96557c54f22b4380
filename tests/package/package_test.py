"""The ZIP that people get: what is in it, and that it runs where nothing but it is.

usage: scripts/in_wine.sh python3 tests/package/package_test.py [NAME...]
Needs the package that scripts/package.sh makes.
"""
import base64
import os
import re
import struct
import sys
import unittest
import zipfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path[:0] = [os.path.join(ROOT, "scripts"), os.path.join(ROOT, "tests")]

import backup_tree  # noqa: E402
from case_report import run_cases  # noqa: E402
from program import Program  # noqa: E402
from write_config import SourceFolder, map_drive, write_config  # noqa: E402

PREFIX = os.environ["WINEPREFIX"]
with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as lists:
    VERSION_NUMBERS = re.search(r"project\(Vardeko VERSION (\d+)\.(\d+)\.(\d+)\.(\d+)", lists.read()).groups()
NAME = "Vardeko-" + ".".join(VERSION_NUMBERS[:2])
PACKAGE = os.path.join(ROOT, "build", "windows-x64", f"{NAME}.zip")
PROGRAM, GUIDE = f"{NAME}/Vardeko.exe", f"{NAME}/Anleitung.html"
ICON, GROUP_ICON, VERSION, MANIFEST = 3, 14, 16, 24


def resource_types(program):
    """The numbers of the kinds of resources in a program file."""
    header = struct.unpack_from("<I", program, 0x3C)[0]
    sections, optional = struct.unpack_from("<H12xH", program, header + 6)
    for at in range(header + 24 + optional, header + 24 + optional + sections * 40, 40):
        if program[at:at + 8] == b".rsrc\0\0\0":
            start = struct.unpack_from("<I", program, at + 20)[0]
            named, numbered = struct.unpack_from("<HH", program, start + 12)
            return {struct.unpack_from("<I", program, start + 16 + 8 * entry)[0]
                    for entry in range(named, named + numbered)}
    return set()


class Package(unittest.TestCase):
    def setUp(self):
        self.package = zipfile.ZipFile(PACKAGE)

    def tearDown(self):
        self.package.close()

    def test_it_holds_the_program_and_its_guide_only(self):
        self.assertEqual(sorted(self.package.namelist()), sorted([PROGRAM, GUIDE]))

    def test_the_program_says_what_it_is(self):
        program = self.package.read(PROGRAM)
        self.assertLessEqual({ICON, GROUP_ICON, VERSION, MANIFEST}, resource_types(program))
        # The signature and structure version of VS_FIXEDFILEINFO, then the file's and the product's version.
        major, minor, patch, build = map(int, VERSION_NUMBERS)
        version = struct.pack("<2I4H", 0xFEEF04BD, 0x10000, minor, major, build, patch)
        self.assertIn(version, program)
        self.assertIn(b'<assemblyIdentity type="win32" name="Vardeko"', program)

    def test_the_guide_is_one_page_without_dead_links(self):
        page = self.package.read(GUIDE).decode("utf-8")
        links = re.findall(r'href="([^"]*)"', page)
        names = re.findall(r'\bid="([^"]*)"', page)
        self.assertGreater(len(links), 10)
        self.assertEqual(sorted(set(links) - {"#" + name for name in names}), [])
        self.assertEqual(len(names), len(set(names)), "two headings have the same name")
        self.assertIn("#wenn-der-pc-verloren-ist-alles-zurückholen", links)
        pictures = re.findall(r'src="([^"]*)"', page)
        self.assertGreater(len(pictures), 5)
        for picture in pictures:
            kind, _, data = picture.partition(",")
            self.assertEqual(kind, "data:image/png;base64")
            self.assertTrue(base64.b64decode(data, validate=True).startswith(b"\x89PNG"))

    def test_the_unpacked_program_backs_up(self):
        work = os.path.join(PREFIX, "drive_c")
        self.package.extractall(work)
        folders = {letter: os.path.join(PREFIX, "package", letter) for letter in "qn"}
        for letter, folder in folders.items():
            os.makedirs(folder)
            map_drive(PREFIX, letter, folder)
        source = os.path.join(folders["q"], "Brief an Müller.txt")
        with open(source, "wb") as file:
            file.write(b"Guten Tag")
        write_config(PREFIX, "N:", [SourceFolder("Q:\\")])
        program = Program("/COPY", path=os.path.join(work, PROGRAM))
        self.assertEqual(program.wait(60), 0)
        (host,) = os.listdir(folders["n"])
        copy = os.path.join(folders["n"], host, "drive_Q", os.path.basename(source))
        self.assertIsNone(backup_tree.difference(source, copy))


if __name__ == "__main__":
    sys.exit(run_cases([Package], sys.argv[1:]))
