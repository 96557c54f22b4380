#!/bin/bash
# Takes the picture of the setup that docs/images/ holds, from the real one:
#   tests/setup/make_screenshots.sh
# Needs what tests/setup/prepare.sh makes.
set -euo pipefail
cd "$(dirname "$0")/../.."
version=$(sed -n 's/^project(Vardeko VERSION \([0-9]*\.[0-9]*\).*/\1/p' CMakeLists.txt)
if [ "${1:-}" != --inside ]; then
    WINE_DPI=144 exec scripts/in_wine.sh "$0" --inside
fi
title="Setup von Vardeko $version"
wine "build/windows-x64/VardekoSetup-$version.exe" &
setup=$!
wine build/windows-x64/tests/setup/user_hand.exe wait "$title"
xdotool mousemove 0 0
sleep 1
# Without the caption, the signs of which take a font that Wine leaves out.
import -window "$(xdotool search --onlyvisible --name "^$title" | head -n 1)" png:- |
    convert - -gravity north -chop 0x31 -colors 256 -strip PNG8:docs/images/setup-150.png
wine build/windows-x64/tests/setup/user_hand.exe click "$title" Abbrechen
wait $setup || true
