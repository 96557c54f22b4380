"""What the setup's tests share: the two versions, the prefix they are installed in, and the user before it."""
import os
import pwd
import re
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path[:0] = [os.path.join(ROOT, "scripts"), os.path.join(ROOT, "tests"), os.path.join(ROOT, "tests", "update")]

from program import Program  # noqa: E402

PREFIX = os.environ["WINEPREFIX"]
BUILD = os.path.join(ROOT, "build", "windows-x64")
TOOLS = os.path.join(BUILD, "tests", "setup")
with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as _lists:
    FULL = re.search(r"project\(Vardeko VERSION ([\d.]+)", _lists.read())[1]
_numbers = [int(number) for number in FULL.split(".")]
# As tests/setup/CMakeLists.txt builds it.
NEXT_FULL = ".".join(map(str, [_numbers[0], _numbers[1] + 1, _numbers[2], _numbers[3] + 100]))
SHORT, NEXT = (".".join(version.split(".")[:2]) for version in (FULL, NEXT_FULL))

DRIVE = os.path.join(PREFIX, "drive_c")
FOLDER = os.path.join(DRIVE, "Program Files", "Vardeko")
USER = os.path.join(DRIVE, "users", pwd.getpwuid(os.getuid()).pw_name)
TASKS = os.path.join(DRIVE, "windows", "system32", "tasks")
MENU = os.path.join("Microsoft", "Windows", "Start Menu", "Programs", "Vardeko.lnk")
ENTRY = r"Software\Microsoft\Windows\CurrentVersion\Uninstall\Vardeko"
DESKTOP = os.path.join(DRIVE, "users", "Public", "Desktop", "Vardeko.lnk")
SCHEDULER = os.path.join(DRIVE, "windows", "system32", "schtasks.exe")
FILES = ["Anleitung.html", "Entfernen.exe", "Vardeko.exe"]

# For the stand-in of the system's own program.
os.environ["WINEDLLOVERRIDES"] += ";schtasks.exe=n,b"


def setup_of(version):
    return os.path.join(BUILD if version == SHORT else os.path.join(TOOLS, "release", "download"),
                        f"VardekoSetup-{version}.exe")


def built(version):
    return os.path.join(BUILD, "bin", "Vardeko.exe") if version == SHORT else os.path.join(TOOLS, "VardekoNext.exe")


def content(path):
    with open(path, "rb") as file:
        return file.read()


def start(program, *arguments, **options):
    return subprocess.Popen(["wine", program, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL, **options)


def run(program, *arguments, seconds=60):
    return start(program, *arguments).wait(seconds)


def install(version, *switches):
    """Runs the setup silently; its exit code."""
    return run(setup_of(version), "/S", *switches)


def uninstall(*switches, folder=FOLDER):
    """Runs the uninstaller and waits: it goes on in a copy of itself."""
    code = run(os.path.join(folder, "Entfernen.exe"), "/S", *switches)
    wait_until(lambda: entry("HKLM") is None and entry("HKCU") is None
               and not os.path.exists(os.path.join(folder, "Entfernen.exe")))
    time.sleep(0.2)  # for the folder
    return code


def wait_until(condition, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("what was waited for did not come")
        time.sleep(0.02)


def entry(hive):
    """The values under "Apps"; None when there is no entry."""
    found = subprocess.run(["wine", "reg", "query", f"{hive}\\{ENTRY}"], capture_output=True, check=False)
    if found.returncode != 0:
        return None
    return dict(re.findall(r"^ +(\w+) +REG_\w+ +(.*?)\r?$", found.stdout.decode("utf-8", "replace"), re.M))


def clean():
    """Nothing is installed, whatever the last test has left."""
    for folder in (FOLDER, TASKS, os.path.join(DRIVE, "Mein Ordner"), os.path.join(DRIVE, "ProgramData", "Vardeko"),
                   os.path.join(USER, "AppData", "Local", "Programs", "Vardeko"),
                   os.path.join(USER, "AppData", "Local", "Vardeko")):
        shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(TASKS)
    if os.path.exists(DESKTOP):
        os.unlink(DESKTOP)
    for hive in ("HKLM", "HKCU"):
        run("reg", "delete", f"{hive}\\{ENTRY}", "/f")


def hand(*arguments):
    """What a user does; what user_hand.cpp prints."""
    found = subprocess.run(["wine", os.path.join(TOOLS, "user_hand.exe"), *arguments], stdin=subprocess.DEVNULL,
                           capture_output=True, check=False)
    text = found.stdout.decode("utf-8", "replace").replace("\r", "")
    if found.returncode != 0:
        raise AssertionError(f"{arguments}: {text}")
    return text


def installed_program(*arguments):
    return Program(*arguments, path=os.path.join(FOLDER, "Vardeko.exe"))
