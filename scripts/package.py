"""Makes what people get from a built program: the ZIP and the setup.

usage: package.py PROGRAM VERSION FOLDER
       VERSION as in CMakeLists.txt, 7.8.0.7800; writes FOLDER/Vardeko-7.8.zip and FOLDER/VardekoSetup-7.8.exe
SOURCE_DATE_EPOCH is the time all of it bears, the beginning of 2000 when it is not set. Where scripts/sign.sh is
told a certificate, the program, the uninstaller and the setup are signed.
"""
import datetime
import os
import shutil
import subprocess
import sys
import tempfile
import zipfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAM, GUIDE = "Vardeko.exe", "Anleitung.html"
GUIDE_PAGES = "anleitung.md", "wiederherstellen.md"
DEFAULT_EPOCH = "946684800"
SIGN = os.path.join(ROOT, "scripts", "sign.sh")


def short(version):
    return ".".join(version.split(".")[:2])


def signs():
    return bool(os.environ.get("VARDEKO_SIGN_CERTIFICATE"))


def sign(path):
    if signs():
        subprocess.run([SIGN, path], check=True)


def make_zip(folder, target, stem):
    moment = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as package:
        for name in (GUIDE, PROGRAM):
            entry = zipfile.ZipInfo(f"{stem}/{name}", moment.timetuple()[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            with open(os.path.join(folder, name), "rb") as file:
                package.writestr(entry, file.read())


def make_setup(folder, target, version):
    program, guide = (os.path.join(folder, name) for name in (PROGRAM, GUIDE))
    # And the uninstaller, which is made while this is installed.
    size = sum(os.path.getsize(path) for path in (program, guide)) // 1024 + 180
    values = {"PROGRAM": program, "GUIDE": guide, "ICON": os.path.join(ROOT, "src", "app", "vardeko.ico"),
              "SHORT_VERSION": short(version), "FULL_VERSION": version, "SIZE_KB": size, "OUTPUT": target}
    if signs():
        values["SIGN"] = SIGN
    made = subprocess.run(["makensis", "-V2", "-WX", "-INPUTCHARSET", "UTF8",
                           *(f"-D{name}={value}" for name, value in values.items()),
                           os.path.join(ROOT, "setup", "vardeko.nsi")], capture_output=True, check=False)
    if made.returncode != 0:
        sys.exit((made.stderr + made.stdout).decode("utf-8", "replace"))
    sign(target)


def make_package(program, version, target):
    """Both files; their paths."""
    os.environ.setdefault("SOURCE_DATE_EPOCH", DEFAULT_EPOCH)
    os.makedirs(target, exist_ok=True)
    target = os.path.abspath(target)
    stem = f"Vardeko-{short(version)}"
    paths = os.path.join(target, stem + ".zip"), os.path.join(target, f"VardekoSetup-{short(version)}.exe")
    with tempfile.TemporaryDirectory() as folder:
        shutil.copyfile(program, os.path.join(folder, PROGRAM))
        sign(os.path.join(folder, PROGRAM))
        subprocess.run([sys.executable, os.path.join(ROOT, "scripts", "make_guide.py"),
                        *(os.path.join(ROOT, "docs", page) for page in GUIDE_PAGES), os.path.join(folder, GUIDE)],
                       check=True)
        make_zip(folder, paths[0], stem)
        make_setup(folder, paths[1], version)
    return paths


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    print("\n".join(make_package(*sys.argv[1:])))
