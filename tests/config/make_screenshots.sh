#!/bin/bash
# Makes the pictures of the configuration window from the real one, at four scales:
#   make_screenshots.sh CONFIG_WINDOW_TEST_EXE FOLDER
# writes FOLDER/config-*.png. Takes ImageMagick.
set -euo pipefail

in_wine=$(cd "$(dirname "$0")/../../scripts" && pwd)/in_wine.sh
program=$1
folder=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$folder"
for dpi in 96 144 192 288; do
    WINE_SCREEN=2800x1800 VARDEKO_SCREENSHOTS=Z:${work//\//\\} WINE_DPI=$dpi \
        "$in_wine" wine "$program" \
        --gtest_also_run_disabled_tests --gtest_filter='TConfigScreenshots.*' >"$work/log" ||
        { cat "$work/log" >&2; exit 1; }
done
for picture in "$work"/*.bmp; do
    png=$folder/$(basename "$picture" .bmp).png
    convert "$picture" -alpha off -colors 256 -strip -define png:compression-level=9 "PNG8:$png"
    echo "$png"
done
