"""From the installed version to the next one, as a user gets there: the program finds it, fetches it and makes room
for its setup."""
import hashlib
import os
import re
import struct
import tempfile
import threading
import unittest

import installation
from installation import (DRIVE, FOLDER, MENU, NEXT, PREFIX, SHORT, TASKS, TOOLS, USER, built, clean, content, entry,
                          hand, install, installed_program, run, uninstall, wait_until)

import backup_tree
import https_server
from write_config import SourceFolder, config_folder, map_drive, write_config

RELEASE = os.path.join(TOOLS, "release")
with open(os.path.join(installation.BUILD, "CMakeCache.txt"), encoding="utf-8") as _cache:
    SERVER = re.search(r"^VARDEKO_UPDATE_SERVER:STRING=(.*)$", _cache.read(), re.M)[1]


class Site(https_server.Answer):
    """The release as it is uploaded."""

    asked = []

    def do_GET(self):
        self.asked.append((self.path, self.headers.get("User-Agent")))
        path = os.path.normpath(RELEASE + self.path)
        if not path.startswith(RELEASE) or not os.path.isfile(path):
            self.send_error(404)
            return
        body = content(path)
        first = self.asked_start()
        headers = [("ETag", '"one"'), ("Accept-Ranges", "bytes")]
        if first is None:
            self.send_body(body, headers=headers)
        else:
            headers.append(("Content-Range", f"bytes {first}-{len(body) - 1}/{len(body)}"))
            self.send_body(body[first:], 206, headers)


def trust(certificate):
    """Makes an authority's certificate one of the user's trusted ones."""
    data = content(certificate)
    digest = hashlib.sha1(data).digest()
    # Properties with number, kind and length: the hash, and the certificate itself.
    blob = struct.pack("<III", 3, 1, 20) + digest + struct.pack("<III", 32, 1, len(data)) + data
    key = rf"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates\{digest.hex().upper()}"
    run("reg", "add", key, "/v", "Blob", "/t", "REG_BINARY", "/d", blob.hex(), "/f")


class UpdateRoundTrip(unittest.TestCase):
    def setUp(self):
        try:
            folder = self.enterContext(tempfile.TemporaryDirectory())
            https_server.make_certificates(folder, f"DNS:{SERVER}")
            server = https_server.Server(https_server.secure_context(folder, "trusted"), 443, Site)
        except PermissionError:
            self.skipTest("no network of its own: start this through tests/setup/own_network.sh")
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        clean()
        trust(os.path.join(folder, "authority.der"))
        folders = {letter: os.path.join(PREFIX, "update", letter) for letter in "qn"}
        for letter, path in folders.items():
            os.makedirs(path)
            map_drive(PREFIX, letter, path)
        for number in range(20):
            with open(os.path.join(folders["q"], f"Brief {number}.txt"), "wb") as file:
                file.write(b"Guten Tag")
        write_config(PREFIX, "N:", [SourceFolder("Q:\\")])
        self.backup = folders["n"]

    def kept(self):
        """What an update leaves as it is: settings, tables, the evening's task, the backup."""
        settings = config_folder(PREFIX)
        files = [os.path.join(folder, name) for folder in (settings, TASKS) for name in sorted(os.listdir(folder))]
        return {path: content(path) for path in files if os.path.isfile(path)}, backup_tree.snapshot(self.backup)

    def test_from_one_version_to_the_next_and_away(self):
        self.assertEqual(install(SHORT, "/TASK=20:00"), 0)
        self.assertEqual(installed_program("/COPY").wait(60), 0)
        before = self.kept()
        self.assertGreater(len(before[1]), 20)

        program = installed_program()
        hand("click", "Vardeko Update", "Update")
        hand("click", "Bestätigung", "Ja")
        hand("click", f"Setup von Vardeko {NEXT}", "Installieren")
        self.assertEqual(program.wait(60), 0)
        hand("click", f"Setup von Vardeko {NEXT}", "Vardeko jetzt starten")
        Site.asked.clear()
        hand("click", f"Setup von Vardeko {NEXT}", "Fertig")
        # The new version is at work: it asks in its turn.
        wait_until(lambda: Site.asked)
        self.assertEqual(Site.asked[0], ("/info/vardeko.info", f"Vardeko {NEXT} Update Agent"))
        self.assertEqual(content(os.path.join(FOLDER, "Vardeko.exe")), content(built(NEXT)))
        self.assertNotIn("Vardeko Update", hand("windows"))
        hand("close", "Vardeko x64")
        wait_until(lambda: "Vardeko x64" not in hand("windows"))
        self.assertEqual(self.kept(), before)
        self.assertEqual(entry("HKLM")["DisplayVersion"], NEXT)

        self.assertEqual(installed_program("/COPY").wait(60), 0)
        after = backup_tree.snapshot(self.backup)
        self.assertEqual([path for path in backup_tree.written(before[1], after) if "Vardeko.dat" not in path], [])
        self.assertEqual(uninstall(), 0)
        fetched = os.path.join(USER, "AppData", "Local", "Vardeko")
        for path in (FOLDER, os.path.join(DRIVE, "ProgramData", MENU), fetched):
            self.assertFalse(os.path.exists(path), path)
        self.assertEqual(os.listdir(TASKS), [])
        self.assertEqual(backup_tree.snapshot(self.backup), after)
        self.assertEqual(sorted(os.listdir(config_folder(PREFIX))), ["Log", "NASConf.Dat", "NASConf.ini", "NASSeen.ini"])
