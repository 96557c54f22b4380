#!/bin/bash
# Configures and builds presets, quietly unless something is wrong:
#   scripts/build.sh windows-x64 [native ...]
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p build
for preset in "$@"; do
    log=build/$preset.log
    # One at a time: stages of ./test that go on beside each other may want the same preset.
    exec 8>"build/$preset.lock"
    flock 8
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } </dev/null >"$log" 2>&1 8>&-; then
        grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" | tail -n 60 >&2
        echo "Preset $preset does not build; all of it is in $log." >&2
        exit 1
    fi
done
