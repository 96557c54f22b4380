"""Checks the rules that docs/architecture.md sets for src/; prints every breach.

- An include only points down the list of rooms, or stays in its room.
- No file includes one that includes it back, however long the way.
- Every source file is built, and files that count as portable see no <windows.h>.
"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = os.path.join(ROOT, "src")
# From the top down.
ROOMS = ("app", "update", "config", "engine", "hashdb", "store", "ui", "texts", "support")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def built_files():
    """The rooms' lists of sources: "room/file.cpp" -> portable."""
    built = {}
    for folder in sorted(os.listdir(SOURCES)):
        lists = os.path.join(SOURCES, folder, "CMakeLists.txt")
        if not os.path.exists(lists):
            continue
        with open(lists, encoding="utf-8") as file:
            text = re.sub(r"#.*", "", file.read())
        for body in re.findall(r"vardeko_room\(\s*\w+([^)]*)\)", text):
            section = None
            for word in body.split():
                if word.isupper():
                    section = word
                elif section in ("PORTABLE", "WINDOWS"):
                    built[f"{folder}/{word}"] = section == "PORTABLE"
        # The program's own sources stand in the call that makes it.
        for body in re.findall(r"add_executable\(\s*\w+([^)]*)\)", text):
            for word in body.split():
                if word.endswith(".cpp"):
                    built[f"{folder}/{word}"] = False
    return built


def read_includes():
    """file -> (own files included, system headers included)"""
    includes = {}
    for folder, _, names in os.walk(SOURCES):
        for name in names:
            if name.endswith((".h", ".h.in", ".cpp")):
                path = os.path.join(folder, name)
                with open(path, encoding="utf-8") as file:
                    found = INCLUDE.findall(file.read())
                includes[os.path.relpath(path, SOURCES).removesuffix(".in")] = (
                    [target for mark, target in found if mark == '"'],
                    [target for mark, target in found if mark == "<"])
    return includes


def room_of(path):
    return path.split("/")[0]


def cycles(includes):
    """Every way round, as a list of files."""
    found, done = [], set()

    def visit(path, way):
        if path in way:
            found.append(way[way.index(path):] + [path])
        elif path not in done:
            for target in includes.get(path, ((), ()))[0]:
                visit(target, way + [path])
            done.add(path)

    for path in sorted(includes):
        visit(path, [])
    return found


def breaches():
    built, includes = built_files(), read_includes()
    found = []
    for path, (targets, _) in sorted(includes.items()):
        room = room_of(path)
        if room not in ROOMS:
            found.append(f"src/{path}: {room} is no room")
            continue
        for target in targets:
            if target not in includes:
                # The resource compiler's headers and the like are not found either: all go by room/file.
                found.append(f'src/{path}: "{target}" is not in src/; includes are written "room/file.h"')
            elif ROOMS.index(room_of(target)) < ROOMS.index(room):
                found.append(f"src/{path} ({room}) includes {target} ({room_of(target)}), which stands above it")
        if path.endswith(".cpp") and path not in built:
            found.append(f"src/{path} is in no CMakeLists.txt")
    found += ["a circle of includes: " + " -> ".join(way) for way in cycles(includes)]

    for path, portable in sorted(built.items()):
        seen, ahead = set(), [path] if portable else []
        while ahead:
            file = ahead.pop()
            if file in seen or file not in includes:
                continue
            seen.add(file)
            if "windows.h" in (header.lower() for header in includes[file][1]):
                found.append(f"src/{path} counts as portable, but sees <windows.h> through {file}")
            ahead += includes[file][0]
    return found


if __name__ == "__main__":
    problems = breaches()
    print("\n".join(problems) if problems else "Every include points down.")
    sys.exit(1 if problems else 0)
