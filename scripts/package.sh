#!/bin/bash
# Makes what people get, in build/windows-x64: the setup, VardekoSetup-VERSION.exe, and the ZIP of the program and its
# guide, Vardeko-VERSION.zip. What is missing on a Debian 12 machine is installed first, which takes root.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh release
scripts/build.sh windows-x64
version=$(sed -n 's/^project(Vardeko VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
python3 scripts/package.py build/windows-x64/bin/Vardeko.exe "$version" build/windows-x64
