#!/bin/bash
# Runs clang-tidy over src/, or over the files named, with what the Windows build is compiled with; prints
# what it finds. Takes some seconds per file, so it works on as many at once as there are cores.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh lint
scripts/build.sh windows-x64
# clang knows the target, but not where Debian keeps the cross compiler's headers.
library=$(x86_64-w64-mingw32-g++-posix -print-file-name=include)
library=$(dirname "$library")
arguments=(-p build/windows-x64 --quiet --extra-arg=--target=x86_64-w64-mingw32)
for folder in "$library/include/c++" "$library/include/c++/x86_64-w64-mingw32" \
        /usr/x86_64-w64-mingw32/include; do
    arguments+=("--extra-arg=-isystem$folder")
done
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(find src -name '*.cpp' | sort)
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy "${arguments[@]}" 2>/dev/null
