#!/bin/bash
# Takes the pictures of the main window that docs/images/ holds, from the real program at work on a real folder:
#   scripts/screenshots.sh [SCALE...]      100 150 200 when none is named
# Needs build/windows-x64/bin/Vardeko.exe.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh
images=$PWD/docs/images
work=$PWD/build/screenshots
mkdir -p "$images"
trap wine_close EXIT
trap 'exit 130' INT TERM HUP

# The caption and the frame are the system's. Windows draws them dark for a window that asks for it; Wine
# takes them from the user's colours. The sign on the close box needs a font that Wine's package leaves out, so
# it is made invisible.
dark_frames() {
    local name
    for name in ActiveTitle GradientActiveTitle InactiveTitle GradientInactiveTitle ActiveBorder InactiveBorder \
        ButtonFace ButtonLight ButtonHilight ButtonShadow ButtonDkShadow; do
        echo "\"$name\"=\"32 34 38\""
    done | cat <(printf 'REGEDIT4\n\n[HKEY_CURRENT_USER\\Control Panel\\Colors]\n') - \
        <(printf '"TitleText"="232 234 237"\n"InactiveTitleText"="163 171 181"\n"ButtonText"="32 34 38"\n') \
        >"$work/colours.reg"
    wine regedit /S "Z:${work//\//\\}\\colours.reg"
}

window() { xdotool search --onlyvisible --name '^Vardeko x64$' | head -n 1; }

# picture NAME: the window as it is now.
picture() {
    import -window "$(window)" -colors 256 -strip "PNG8:$images/main-$1-$scale.png"
    echo "docs/images/main-$1-$scale.png"
}

# Starts the program and waits for its window.
start() {
    taskset -c "$(wine_core)" wine build/windows-x64/bin/Vardeko.exe "$@" &
    program=$!
    local tries
    for tries in {1..100}; do
        [ -z "$(window)" ] || break
        sleep 0.1
    done
    xdotool windowsize --sync "$(window)" $((900 * scale / 100)) $((560 * scale / 100)) 2>/dev/null || true
    xdotool mousemove 1990 1290
    sleep 1
}

close() {
    wine taskkill /IM Vardeko.exe >/dev/null 2>&1
    wait "$program" || true
}

# Keys go to the window that was clicked last; the right half of the second bar does nothing.
press() {
    xdotool mousemove --window "$(window)" $((700 * scale / 100)) $((80 * scale / 100)) click 1 key "$1"
    xdotool mousemove 1990 1290
}

# The copies of some files have a folder in their way.
put_folders_in_the_way() {
    find "$work/destination" -type f -name 'copyright' | sed -n '3~40p' | while read -r file; do
        rm "$file"
        mkdir "$file"
    done
    find "$work/destination" -name Vardeko.dat -delete
}

export WINE_SCREEN=2000x1300
[ $# -gt 0 ] || set -- 100 150 200
for scale in "$@"; do
    rm -rf "$work"
    mkdir -p "$work/destination"
    WINE_DPI=$((96 * scale / 100)) wine_open screenshots
    wine_display
    dark_frames
    ln -sfn "$work/destination" "$WINEPREFIX/dosdevices/n:"
    ln -sfn /usr/share/doc "$WINEPREFIX/dosdevices/d:"
    python3 scripts/write_config.py "$WINEPREFIX" N: 'D:\'

    start
    picture idle
    press F5
    sleep 4
    picture copying
    press shift+F5
    sleep 1
    picture stopped
    close

    # Once through, so that there are copies to put folders in the way of.
    taskset -c "$(wine_core)" wine build/windows-x64/bin/Vardeko.exe /COPY || true
    put_folders_in_the_way
    start
    press F5
    for tries in {1..120}; do
        sleep 1
        [ -z "$(find "$work/destination" -name Vardeko.dat)" ] || break
    done
    sleep 1
    picture errors
    close
    wine_close
done
