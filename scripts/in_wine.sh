#!/bin/bash
# Runs a command with a fresh Wine prefix, its server, a virtual display and one core for all of it, and cleans
# up behind it:
#   scripts/in_wine.sh wine build/windows-x64-checked/bin/support_test.exe
# The variables that scripts/wine.sh names (WINE_DPI, WINE_LOCALE, WINE_TZ, WINE_CORE) apply.
set -euo pipefail
. "$(dirname "$0")/wine.sh"
name=job.$$
trap 'wine_close; rm -rf "$wine_root/$name"' EXIT
trap 'exit 130' INT TERM HUP
wine_open "$name"
wine_temporary_folder_in_memory
wine_display
# A share for the tests.
mkdir -p "$WINEPREFIX/dosdevices/unc/vardekotest/share"
export VARDEKO_TEST_SHARE='\\vardekotest\share'
taskset -c "$(wine_core)" "$@" &
# Waiting in the background lets the traps run at once.
command=$!
trap 'kill $command 2>/dev/null; exit 130' INT TERM HUP
wait $command
