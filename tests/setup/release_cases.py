"""What a release consists of, and what it is signed with."""
import configparser
import hashlib
import os
import re
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

from installation import FOLDER, FULL, NEXT, ROOT, SHORT, built, clean, content, run

import https_server

SETUP = f"VardekoSetup-{SHORT}.exe"
SIGN = os.path.join(ROOT, "scripts", "sign.sh")


def script(name, *arguments, **environment):
    return subprocess.run([sys.executable, os.path.join(ROOT, "scripts", name), *arguments], capture_output=True,
                          text=True, check=False, env={**os.environ, **environment})


class Release(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def make(self, changelog=os.path.join(ROOT, "CHANGELOG.md"), **environment):
        return script("make_release.py", built(SHORT), FULL, changelog, "updates.test", self.folder, **environment)

    def certificate(self):
        """An authority and a certificate for signing programs, made for this test: sign.sh's environment."""
        key = ["-newkey", "rsa:2048", "-nodes", "-days", "2"]
        for name, arguments in (("authority", ["-x509", "-subj", "/CN=Vardeko Test Authority", "-out",
                                               self.path("authority.pem")]),
                                ("signer", ["-subj", "/CN=Vardeko Test", "-out", self.path("signer.csr")])):
            https_server.openssl(self.folder, "req", *key, "-keyout", name + ".key", *arguments)
        with open(self.path("signer.ext"), "w", encoding="ascii") as file:
            file.write("extendedKeyUsage=codeSigning\nbasicConstraints=CA:FALSE\n")
        https_server.openssl(self.folder, "x509", "-req", "-in", "signer.csr", "-CA", "authority.pem", "-CAkey",
                             "authority.key", "-CAcreateserial", "-days", "2", "-extfile", "signer.ext", "-out",
                             "signer.pem")
        with open(self.path("password"), "w", encoding="ascii") as file:
            file.write("geheim")
        https_server.openssl(self.folder, "pkcs12", "-export", "-in", "signer.pem", "-inkey", "signer.key",
                             "-passout", "file:password", "-out", "signer.p12")
        return {"VARDEKO_SIGN_CERTIFICATE": self.path("signer.p12"), "VARDEKO_SIGN_PASSWORD": self.path("password"),
                "VARDEKO_SIGN_AUTHORITY": self.path("authority.pem")}

    def is_signed(self, path):
        return subprocess.run(["osslsigncode", "verify", "-CAfile", self.path("authority.pem"), "-in", path],
                              capture_output=True, check=False).returncode == 0

    def test_its_parts_agree_with_each_other(self):
        made = self.make()
        self.assertEqual(made.returncode, 0, made.stderr)
        self.assertIn("NOT signed", made.stdout)
        sums = dict(line.split()[::-1] for line in content(self.path("download", "SHA256SUMS")).decode().splitlines())
        self.assertEqual(sorted(sums), sorted([SETUP, f"Vardeko-{SHORT}.zip"]))
        for name, digest in sums.items():
            self.assertEqual(hashlib.sha256(content(self.path("download", name))).hexdigest(), digest)
        information = configparser.ConfigParser(interpolation=None)
        information.read_string(content(self.path("info", "vardeko.info")).decode("cp1252"))
        values = information["Vardeko 7.0"]
        self.assertEqual((values["Version"], values["Build"]), (SHORT, FULL.split(".")[3]))
        self.assertEqual(values["Url"], f"https://updates.test/download/{SETUP}")
        self.assertEqual(values["FileName"], SETUP)
        self.assertIn("\n> " + values["UpdateMsg"], content(os.path.join(ROOT, "CHANGELOG.md")).decode("utf-8"))
        manifest = content(self.path("winget", "Vardeko.Vardeko.installer.yaml")).decode()
        self.assertEqual(re.findall(r"InstallerSha256: (\w+)", manifest), [sums[SETUP].upper()] * 2)

    def test_a_changelog_of_another_version_makes_none(self):
        changelog = content(os.path.join(ROOT, "CHANGELOG.md")).decode("utf-8")
        for fault in (changelog.replace(f"## {SHORT} ", f"## {NEXT} ", 1), changelog.replace("\n> ", "\n", 1)):
            with open(self.path("changes"), "w", encoding="utf-8") as file:
                file.write(fault)
            made = self.make(self.path("changes"))
            self.assertNotEqual(made.returncode, 0)
            self.assertEqual(os.listdir(self.folder), ["changes"])

    def test_signed_with_a_certificate(self):
        environment = self.certificate()
        made = self.make(**environment)
        self.assertEqual(made.returncode, 0, made.stderr)
        with zipfile.ZipFile(self.path("download", f"Vardeko-{SHORT}.zip")) as package:
            program = package.extract(f"Vardeko-{SHORT}/Vardeko.exe", self.folder)
        clean()
        setup = self.path("download", SETUP)
        self.assertEqual(run(setup, "/S"), 0)
        for path in (program, setup, os.path.join(FOLDER, "Vardeko.exe"), os.path.join(FOLDER, "Entfernen.exe")):
            self.assertTrue(self.is_signed(path), path)
        self.assertFalse(self.is_signed(built(SHORT)))
        # Signed by somebody else than it should be, it is no release.
        foreign = {**environment, "VARDEKO_SIGN_AUTHORITY": "/etc/ssl/certs/ca-certificates.crt"}
        unsigned = content(built(SHORT))
        with open(program, "wb") as file:
            file.write(unsigned)
        self.assertEqual(subprocess.run([SIGN, program], env={**os.environ, **foreign}, capture_output=True,
                                        check=False).returncode, 1)
        self.assertEqual(content(program), unsigned)

    def test_the_same_files_whenever_they_are_made(self):
        """The same program in the same packages; ./test long-release builds it twice."""
        program = content(built(SHORT))
        header = struct.unpack_from("<I", program, 0x3C)[0]
        self.assertEqual(struct.unpack_from("<I", program, header + 8)[0], 0, "the time of linking")
        for encoding in ("utf-8", "utf-16-le"):
            self.assertNotIn(ROOT.encode(encoding), program)
        packages = []
        for name in ("once", "again"):
            os.mkdir(self.path(name))
            copy = self.path(name, "program.exe")
            with open(copy, "wb") as file:
                file.write(program)
            made = script("package.py", copy, FULL, self.path(name))
            self.assertEqual(made.returncode, 0, made.stderr)
            packages.append([content(path) for path in made.stdout.split()])
            time.sleep(2)  # as exact as a ZIP's times
        self.assertTrue(packages[0] == packages[1])
