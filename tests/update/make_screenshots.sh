#!/bin/bash
# Takes the pictures of the update window from the real one. Under a display and a Wine prefix:
#   make_screenshots.sh UPDATE_TEST_EXE FOLDER
# writes FOLDER/update-*.png.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
program=$1
folder=$2
mkdir -p "$folder"
xdotool mousemove 0 0  # nothing shall look as if the mouse was over it
"$here/run_with_server.sh" wine "$program" --gtest_also_run_disabled_tests \
    --gtest_filter='TUpdateScreenshots.*' | while read -r word name area; do
    if [ "$word" = shot ]; then
        import -window root -crop "${area%$'\r'}" +repage "$folder/$name.png"
        echo "$folder/$name.png"
    fi
done
