#!/bin/bash
# The inner loop: builds the test program of one room and runs it, or the tests named by a filter.
#   scripts/quick.sh ROOM [FILTER]         natively, under the sanitizers: the portable files
#   scripts/quick.sh ROOM [FILTER] --wine  under Wine: all of the room's files
# ROOM is a folder of src/; FILTER as in --gtest_filter, '*History*' for instance. Without one,
# the minute of FaultyRun is left out.
set -euo pipefail
cd "$(dirname "$0")/.."
wine=
arguments=()
for argument in "$@"; do
    if [ "$argument" = --wine ]; then wine=1; else arguments+=("$argument"); fi
done
room=${arguments[0]:-}
if [ ${#arguments[@]} -gt 2 ] || [ -z "$room" ] || ! grep -qsx "vardeko_test($room" tests/*/CMakeLists.txt; then
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2
    exit 64
fi

preset=native
[ -z "$wine" ] || preset=windows-x64-checked
log=build/quick.log
mkdir -p build
if [ ! -f "build/$preset/build.ninja" ]; then
    scripts/packages.sh test
    cmake --preset "$preset" </dev/null >"$log"
fi
if ! cmake --build --preset "$preset" --target "${room}_test" </dev/null >"$log" 2>&1; then
    grep -vE '^(\[[0-9]+/[0-9]+\] |-- )' "$log" | tail -n 60 >&2
    exit 1
fi
if [ -n "$wine" ]; then
    export WINE_TZ=CET-1CEST,M3.5.0,M10.5.0/3
    run=(scripts/in_wine.sh)
    [ "$room" != update ] || run+=(tests/update/run_with_server.sh)
    run+=(wine "build/$preset/bin/${room}_test.exe")
else
    run=()
    # The sanitizers of this compiler do not get on with the wide address randomization of newer kernels.
    ! setarch -R true 2>/dev/null || run+=(setarch -R)
    run+=("build/$preset/bin/${room}_test")
fi
"${run[@]}" --gtest_brief=1 "--gtest_filter=${arguments[1]:-*-FaultyRun.*}" | tee "$log"
if grep -q '^\[=*\] 0 tests' "$log"; then
    echo "No test has such a name." >&2
    exit 1
fi
