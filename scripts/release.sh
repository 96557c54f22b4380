#!/bin/bash
# Makes a release from a clean checkout of a tagged commit, ready to be uploaded:
#   scripts/release.sh [FOLDER]          build/release/Vardeko-VERSION when none is named
# docs/releasing.md says what becomes of it, and scripts/sign.sh how to have it signed. The same commit gives the same
# files, whenever and wherever it is built, but for signatures.
set -euo pipefail
cd "$(dirname "$0")/.."
say() {
    echo "$1" >&2
    exit 1
}

full=$(sed -n 's/^project(Vardeko VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
version=$(cut -d. -f1,2 <<<"$full")
[ -z "$(git status --porcelain)" ] || say "The checkout is not clean; a release is made of what is committed."
git tag --points-at HEAD | grep -qx "v$version" ||
    say "This commit does not bear the tag v$version; CMakeLists.txt says that it is version $version."
folder=${1:-build/release/Vardeko-$version}
[ ! -e "$folder" ] || say "There is a $folder already."

scripts/packages.sh release
export SOURCE_DATE_EPOCH
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
# Built afresh: neither an old object file nor a cache has a part in what people get.
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
rm -rf build/release/program
mkdir -p build/release
log=build/release/program.log
if ! { cmake -S . -B build/release/program -G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64-x86_64.cmake" \
        -DCMAKE_BUILD_TYPE=Release && cmake --build build/release/program --target Vardeko; } </dev/null >"$log" 2>&1
then
    tail -n 60 "$log" >&2
    say "The program does not build; all of it is in $log."
fi
server=$(sed -n 's/^VARDEKO_UPDATE_SERVER:STRING=//p' build/release/program/CMakeCache.txt)
# Complete or not there.
rm -rf "$folder.unfinished"
python3 scripts/make_release.py build/release/program/bin/Vardeko.exe "$full" CHANGELOG.md "$server" \
    "$folder.unfinished"
mv "$folder.unfinished" "$folder"
find "$folder" -type f | sort
