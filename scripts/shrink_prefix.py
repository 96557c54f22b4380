"""Shrinks a fresh Wine prefix: files that equal their namesake in the Wine package become links to it.

usage: shrink_prefix.py PREFIX
"""
import filecmp
import glob
import os
import sys


def package_files():
    """The package's Windows files: (folder in the prefix, name) -> path."""
    files = {}
    for machine, folder in (("x86_64-windows", "system32"), ("i386-windows", "syswow64")):
        for path in glob.glob(f"/usr/lib/*/wine/{machine}/*"):
            files[folder, os.path.basename(path)] = path
    return files


def shrink(prefix):
    originals = package_files()
    by_name = {}
    for (_, name), path in originals.items():
        by_name.setdefault(name, []).append(path)
    for folder, _, names in os.walk(os.path.join(prefix, "drive_c")):
        for name in names:
            path = os.path.join(folder, name)
            if os.path.islink(path) or os.path.getsize(path) < 4096:
                continue
            for original in by_name.get(name, ()):
                if filecmp.cmp(path, original, shallow=False):
                    os.unlink(path)
                    os.symlink(original, path)
                    break
    # Wine links the user's folders to the home folder; a private prefix must not reach out of itself.
    for folder, names, _ in os.walk(os.path.join(prefix, "drive_c", "users")):
        for name in names:
            path = os.path.join(folder, name)
            if os.path.islink(path):
                os.unlink(path)
                os.mkdir(path)


if __name__ == "__main__":
    shrink(sys.argv[1])
