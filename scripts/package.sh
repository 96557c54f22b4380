#!/bin/bash
# Makes the ZIP that people get, the program and its guide: build/windows-x64/Vardeko-VERSION.zip. What is missing
# on a Debian 12 machine is installed first, which takes root.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh run cmark-gfm
scripts/build.sh windows-x64
log=build/package.log
if ! cmake --build --preset windows-x64 --target package </dev/null >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
ls build/windows-x64/Vardeko-*.zip
