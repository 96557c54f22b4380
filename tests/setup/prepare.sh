#!/bin/bash
# Makes what the setup's tests need: this version's setup, the release of the next version, and the programs they use.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/package.sh
tools=build/windows-x64/tests/setup
exec 8>build/windows-x64.lock  # see scripts/build.sh
flock 8
if ! cmake --build --preset windows-x64 --target setup_test_programs </dev/null >build/setup.log 2>&1 8>&-; then
    cat build/setup.log >&2
    exit 1
fi
exec 8>&-
IFS=. read -r major minor patch build < <(sed -n 's/^project(Vardeko VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
next=$major.$((minor + 1)) next_build=$((build + 100))
sed "0,/^## .*/s//## $next (build $next_build)/" CHANGELOG.md >"$tools/CHANGELOG.md"
server=$(sed -n 's/^VARDEKO_UPDATE_SERVER:STRING=//p' build/windows-x64/CMakeCache.txt)
rm -rf "$tools/release"
python3 scripts/make_release.py "$tools/VardekoNext.exe" "$next.$patch.$next_build" "$tools/CHANGELOG.md" "$server" \
    "$tools/release"
