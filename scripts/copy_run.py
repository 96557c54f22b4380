"""One copy run for ./run: configures the program, runs it, and shows what came of it.

usage: copy_run.py SOURCE DESTINATION [--window [--keep]]
--window only opens the window, --keep with the configuration it had last time.
Runs in a prefix and on a display that scripts/wine.sh has made.
"""
import os
import sys
import time

import backup_tree
from program import ROOT, Program
from write_config import SourceFolder, config_folder, map_drive, write_config

SCREENSHOT = os.path.join(ROOT, "build", "run", "window.png")
SHOWN_LINES = 30
# A program that has used no processor for so long waits for its user, and none will come.
IDLE_SECONDS = 30


def configure(source, destination, rewrite):
    """Writes the configuration; the source folder as the program names it."""
    prefix = os.environ["WINEPREFIX"]
    map_drive(prefix, "n", destination)
    named = "Z:" + source.replace("/", "\\")
    try:
        long_or_foreign = len(named.encode("cp1252")) > 255
    except UnicodeEncodeError:
        long_or_foreign = True
    if long_or_foreign or any(backup_tree.FOREIGN.search(name) for name in source.split("/")):
        # No Windows path, or not one for this table: the folder becomes a drive of its own.
        map_drive(prefix, "s", source)
        named = "S:"
    if rewrite or not os.path.exists(os.path.join(config_folder(prefix), "NASConf.Dat")):
        write_config(prefix, "N:", [SourceFolder(named + "\\" if named == "S:" else named)])
    return named


def amount(size):
    for unit in ("bytes", "KB", "MB", "GB"):
        if size < 1000 or unit == "GB":
            return f"{size} {unit}" if unit == "bytes" else f"{size:.1f} {unit}"
        size /= 1000


def show(label, text):
    print(f"{label:<12} {text}")


def run_to_its_end():
    """Runs the program with /COPY, photographing the window; the exit code and the seconds it took."""
    if os.path.exists(SCREENSHOT):
        os.unlink(SCREENSHOT)
    start = time.monotonic()
    program = Program("/COPY")
    code = None
    while code is None:
        # The window is at work in every picture; the latest shows most.
        program.screenshot(SCREENSHOT)
        if program.idle_seconds() > IDLE_SECONDS:
            print("The program does not go on by itself; its window says why. It is being closed.")
            return program.close(), time.monotonic() - start
        code = program.wait(0.4)
    if text := program.error_text():
        print(text)
    return code, time.monotonic() - start


MEANING = {0: "every file is copied", 1: "not everything could be copied",
           2: "not started: a file of its own is damaged", None: "ended by force"}


def show_tree(destination):
    """The backup's folders and files, cut to a screenful."""
    lines = []
    for folder, folders, files in os.walk(destination):
        folders.sort()
        depth = 0 if folder == destination else os.path.relpath(folder, destination).count("/") + 1
        lines.append("  " * depth + os.path.basename(folder) + "/")
        shown = sorted(files)
        lines += ["  " * (depth + 1) + name for name in shown[:5]]
        if len(shown) > 5:
            lines.append("  " * (depth + 1) + f"... {len(shown) - 5} more files")
    print("\n".join(lines[:SHOWN_LINES]))
    if len(lines) > SHOWN_LINES:
        print(f"... {len(lines) - SHOWN_LINES} more lines")


def show_error_log(path):
    if not os.path.exists(path):
        return
    with open(path, encoding="utf-8", errors="replace") as file:
        lines = file.read().splitlines()
    print(f"\nError.log, the last of its {len(lines)} lines:")
    print("\n".join(lines[-10:]))


def show_left_out(found):
    left_out = []
    if found.dot_folders:
        left_out.append(f"{found.dot_folders} folders beginning with a dot")
    if found.foreign:
        left_out.append(f"{len(found.foreign)} names that Windows cannot have or not tell apart")
    if found.special:
        left_out.append(f"{found.special} pipes, devices, links to nowhere and locked folders")
    if left_out:
        show("Not counted", ", ".join(left_out))


def compare(source, copies, files):
    """Compares every file with its copy; the number of differences."""
    wrong = 0
    for path in files:
        if reason := backup_tree.difference(os.path.join(source, path), os.path.join(copies, path)):
            wrong += 1
            if wrong <= 10:
                print(f"WRONG: the copy of {path} {reason}")
    return wrong


def main():
    source, destination = sys.argv[1:3]
    windowed = "--window" in sys.argv[3:]
    named = configure(source, destination, rewrite="--keep" not in sys.argv[3:])
    show("Source", f"{source}  (for the program: {named})")
    show("Destination", f"{destination}  (for the program: N:)")
    if windowed:
        show("Exit code", Program().process.wait())
        show_tree(destination)
        return 0

    found = backup_tree.walk_source(source)
    before = backup_tree.snapshot(destination)
    code, seconds = run_to_its_end()
    written = backup_tree.written(before, backup_tree.snapshot(destination))
    show("Found", f"{len(found.files)} files in {found.folders} folders, {amount(found.size)}")
    show_left_out(found)
    copied = sum(os.path.getsize(os.path.join(destination, path)) for path in written)
    show("Copied", f"{len(written)} files, {amount(copied)}")
    show("Seconds", f"{seconds:.1f} from the program's start to its end, 1.5 of them waiting as it has to")
    show("Exit code", f"{code} ({MEANING.get(code, 'a crash')})")

    hosts = [entry.path for entry in os.scandir(destination) if entry.is_dir()]
    host = max(hosts, key=os.path.getmtime, default=destination)
    copies = os.path.join(host, "drive_" + named[0], *named[3:].split("\\"))
    wrong = compare(source, copies, found.files)
    if wrong:
        show("Compared", f"{wrong} of {len(found.files)} files are NOT as their source")
    else:
        show("Compared", f"all {len(found.files)} files equal their source byte for byte and time for time")
    if os.path.exists(SCREENSHOT):
        show("Screenshot", SCREENSHOT)
    show_error_log(os.path.join(host, "Error.log"))
    print("\nThe backup:")
    show_tree(destination)
    return 1 if wrong or code != 0 else 0


if __name__ == "__main__":
    sys.exit(main())
