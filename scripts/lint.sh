#!/bin/bash
# Runs cppcheck and clang-tidy over src/, or over the files named; prints what they find. clang-tidy compiles
# them for Windows as the build does, and so also is the second compiler that has to accept them.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh test
scripts/build.sh windows-x64
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(find src -name '*.cpp' | sort)

# Without its group "style", which is a matter of taste, and takes what a reference changes for constant.
cppcheck -j "$(nproc)" --enable=warning,performance,portability --inline-suppr --error-exitcode=1 --quiet \
    --std=c++20 --platform=win64 --library=windows -D_WIN32 -DUNICODE -D_UNICODE -Isrc "${files[@]}"

# clang knows the target, but not where Debian keeps the cross compiler's headers.
library=$(x86_64-w64-mingw32-g++-posix -print-file-name=include)
library=$(dirname "$library")
arguments=(-p build/windows-x64 --quiet --extra-arg=--target=x86_64-w64-mingw32)
for folder in "$library/include/c++" "$library/include/c++/x86_64-w64-mingw32" \
        /usr/x86_64-w64-mingw32/include; do
    arguments+=("--extra-arg=-isystem$folder")
done
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy "${arguments[@]}" 2>/dev/null
