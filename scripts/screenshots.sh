#!/bin/bash
# Takes pictures of the main window and of the empty and filled configuration from the real program at work on
# made folders: those that a page shows into docs/images/, the others into build/pictures/.
#   scripts/screenshots.sh [SCALE...]      100, 150, 200 and 300 when none is named
# Needs build/windows-x64/bin/Vardeko.exe.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh
work=$PWD/build/screenshots
mkdir -p docs/images build/pictures
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

# What a user has: some letters, invoices and photos, enough of them to be photographed while they are copied.
make_folders() {
    local documents=$1/Documents pictures=$1/Pictures name year month number
    mkdir -p "$documents/Briefe"
    for name in 'Kündigung Stromvertrag.docx' 'Brief an die Versicherung.docx' 'Einladung Sommerfest.docx'; do
        head -c 24000 /dev/zero >"$documents/Briefe/$name"
    done
    for year in 2024 2025 2026; do
        mkdir -p "$documents/Rechnungen/$year"
        for month in {01..12}; do
            head -c 90000 /dev/zero >"$documents/Rechnungen/$year/Rechnung $year-$month.pdf"
        done
    done
    head -c 60000 /dev/zero >"$documents/Haushaltsbuch.xlsx"
    for name in '2025 Ostsee' '2026 Garten' '2026 Geburtstag Oma'; do
        mkdir -p "$pictures/$name"
        for number in {1001..1500}; do
            head -c 50000 /dev/zero >"$pictures/$name/IMG_$number.jpg"
        done
    done
}

window() { xdotool search --onlyvisible --name "${1:-^Vardeko x64$}" | head -n 1; }

# picture NAME [WINDOW]: the main window, or the named one, as it is now. What no page shows is for looking at.
picture() {
    local file=$1-$scale.png folder=build/pictures
    if grep -rqF "images/$file" docs/*.md README.md; then
        folder=docs/images
    fi
    import -window "$(window "${2:-}")" -colors 256 -strip "PNG8:$folder/$file"
    echo "$folder/$file"
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
    xdotool mousemove 2795 1795
    sleep 1
}

close() {
    wine taskkill /IM Vardeko.exe >/dev/null 2>&1
    wait "$program" || true
}

# Keys go to the window that was clicked last; the right half of the second bar does nothing.
press() {
    xdotool mousemove --window "$(window)" $((700 * scale / 100)) $((80 * scale / 100)) click 1 key "$1"
    xdotool mousemove 2795 1795
}

# Waits for the end of a run, which writes the hash table.
copied() {
    local tries
    for tries in {1..120}; do
        sleep 1
        [ -z "$(find "$nas" -name Vardeko.dat)" ] || break
    done
    sleep 1
}

# As "Ordner einfügen" fills in the rows.
configure() {
    PYTHONPATH=scripts python3 - <<'END'
import os
from write_config import SourceFolder, write_config
rows = [SourceFolder("C:\\Users\\Petra\\" + name, Extensions=".pdf,.docx,.xlsx,.jpg")
        for name in ("Documents", "Pictures")]
write_config(os.environ["WINEPREFIX"], "\\\\nas\\sicherung", rows)
END
}

configuration() {
    press ctrl+e
    sleep 1
    picture "$1" '^Config COPY$'
}

# Some files have changed, and their copies have a folder in their way.
put_folders_in_the_way() {
    find "$nas" -type f -name 'Rechnung*' | sort | sed -n '3~7p' | while read -r file; do
        rm "$file"
        mkdir "$file"
        find "$WINEPREFIX/drive_c/users/Petra" -name "$(basename "$file")" -exec touch {} +
    done
}

export WINE_SCREEN=2800x1800
[ $# -gt 0 ] || set -- 100 150 200 300
for scale in "$@"; do
    nas=$work/sicherung
    rm -rf "$work"
    mkdir -p "$nas"
    WINE_DPI=$((96 * scale / 100)) wine_open screenshots
    wine_display
    dark_frames
    mkdir -p "$WINEPREFIX/dosdevices/unc/nas"
    ln -sfn "$nas" "$WINEPREFIX/dosdevices/unc/nas/sicherung"
    make_folders "$WINEPREFIX/drive_c/users/Petra"

    start
    picture main-idle
    configuration config-empty
    close

    configure
    start
    configuration config-folders
    close
    start
    press F5
    sleep 2
    picture main-copying
    copied
    picture main-copied
    press F5
    sleep 4
    picture main-unchanged
    put_folders_in_the_way
    press F5
    sleep 4
    picture main-errors
    rm "$WINEPREFIX/dosdevices/unc/nas/sicherung"
    press F5
    sleep 2
    picture main-no-destination
    close
    wine_close
done
