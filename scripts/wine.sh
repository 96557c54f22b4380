# To be sourced: private Wine prefixes under build/wine, and a display to draw on.
#
#   wine_open NAME [--keep]   makes the prefix build/wine/NAME, afresh unless --keep finds one, and starts its
#                             server; exports WINEPREFIX and the rest of Wine's environment
#   wine_display              starts a virtual display and exports DISPLAY; after wine_open
#   wine_close                ends server and display; call it from an EXIT trap
#   wine_core                 prints the core to pin programs to
#
# Before wine_open these may be set: WINE_DPI (96), WINE_SCREEN (1600x1000), WINE_LOCALE (de_DE.UTF-8),
# WINE_TZ (the system's), WINE_CORE (the last core allowed).
#
# Program and server must share one core: every file operation is a question to the server, and waking each
# other across cores costs ten times the work itself.

wine_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/wine
wine_memory=/dev/shm/vardeko-temp
wine_scripts=$(dirname "${BASH_SOURCE[0]}")
wine_display_process=
# Keeps Debian's starter of Wine from asking for the 32-bit half, which is not needed.
export WINEDEBUG=${WINEDEBUG:--all}

wine_core() {
    # "0-3,6": the end of the list.
    local allowed
    allowed=$(taskset -cp $$)
    echo "${WINE_CORE:-${allowed##*[ ,-]}}"
}

# Wine takes language and number formats from the locale, and file names as well: where the locale is not
# installed it still finds the language but spoils every letter outside ASCII. So the locale is made here.
wine_locale() {
    local locale=$1 unfinished
    case $locale in
        C.*) unset LOCPATH ;;
        *)
            export LOCPATH=$wine_root/locale
            if [ ! -d "$LOCPATH/$locale" ]; then
                mkdir -p "$LOCPATH"
                unfinished=$(mktemp -d "$LOCPATH/unfinished.XXXXXX")
                localedef -i "${locale%.*}" -f "${locale#*.}" "$unfinished/$locale" 2>/dev/null || true
                mv -T "$unfinished/$locale" "$LOCPATH/$locale" 2>/dev/null || true
                rm -rf "$unfinished"
                [ -d "$LOCPATH/$locale" ] || { echo "The locale $locale could not be made." >&2; return 1; }
            fi ;;
    esac
    # The shell itself does not look into LOCPATH, and says so.
    { export LC_ALL=$locale; } 2>/dev/null
}

wine_environment() {
    export WINEPREFIX=$1
    export WINEARCH=win64
    # No questions about downloads, no debugger that holds up a crash, no menu entries outside the prefix.
    export WINEDLLOVERRIDES="mscoree,mshtml=,winedbg.exe=,winemenubuilder.exe="
    wine_locale "${WINE_LOCALE:-de_DE.UTF-8}"
    [ -z "${WINE_TZ:-}" ] || export TZ=$WINE_TZ
}

# A prefix takes ten seconds and 700 MB to make, a copy of the shrunk template some hundredths and 13 MB. The
# template is complete or not there: it is made under another name. Prints where it is.
wine_template() {
    local template="$wine_root/template-4-$(wine --version | tr -cd '[:alnum:]')"
    local unfinished=$wine_root/unfinished lock
    echo "$template"
    [ -d "$template" ] && return 0
    # The lock stays with whoever makes the template, also when the script that started him is killed.
    exec {lock}>"$wine_root/lock"
    flock "$lock"
    [ -d "$template" ] && return 0
    rm -rf "$unfinished"
    wine_make_template "$unfinished" </dev/null >"$unfinished.log" 2>&1 &&
        mv -T "$unfinished" "$template" || { cat "$unfinished.log" >&2; return 1; }
    rm -f "$unfinished.log"
    exec {lock}>&-
}

wine_make_template() {
    local pinned
    pinned=(taskset -c "$(wine_core)")
    wine_environment "$1"
    unset DISPLAY
    # For a window that goes away Wine waits two seconds on the window manager, which is missing; so Wine manages
    # windows itself.
    "${pinned[@]}" wineboot -i &&
        "${pinned[@]}" wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f &&
        wineserver -k && wineserver -w &&
        [ -f "$1/system.reg" ] && [ -L "$1/dosdevices/c:" ] &&
        python3 "$wine_scripts/shrink_prefix.py" "$1"
}

# What runs that were killed have left: names that end in the number of a process that is gone.
wine_sweep() {
    local left owner
    for left in "$wine_root"/job.[0-9]*; do
        # A prefix that is being copied has one more ending.
        owner=${left%.new}
        [ -d "$left" ] && ! kill -0 "${owner##*.}" 2>/dev/null || continue
        WINEPREFIX=$left wineserver -k 2>/dev/null || true
        rm -rf "$left"
    done
    for left in "$wine_memory".[0-9]*; do
        [ -d "$left" ] && ! kill -0 "${left##*.}" 2>/dev/null || continue
        rm -rf "$left" 2>/dev/null || true  # a mount of a test that was killed
    done
}

# The programs' temporary folder, in memory where that can be had: the tests of files make and remove
# thousands, and removing one that was just flushed waits for the disk.
wine_temporary_folder_in_memory() {
    local folder
    folder="$WINEPREFIX/drive_c/users/$(id -un)/Temp"
    [ -d "$folder" ] && mkdir -m 700 "$wine_memory.$$" 2>/dev/null || return 0
    rm -rf "$folder"
    ln -s "$wine_memory.$$" "$folder"
}

wine_open() {
    local name=$1 keep=${2:-} template prefix="$wine_root/$1"
    mkdir -p "$wine_root"
    wine_sweep
    template=$(wine_template) || { echo "No Wine prefix could be made." >&2; return 1; }
    if [ -d "$prefix" ]; then
        # A run that was killed may have left its server behind.
        WINEPREFIX=$prefix wineserver -k 2>/dev/null || true
        [ "$keep" = --keep ] || rm -rf "$prefix"
    fi
    if [ ! -d "$prefix" ]; then
        rm -rf "$prefix.new"
        cp -a "$template" "$prefix.new"
        mv -T "$prefix.new" "$prefix"
    fi
    wine_environment "$prefix"
    if [ -n "${WINE_DPI:-}" ]; then
        taskset -c "$(wine_core)" wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD \
            /d "$WINE_DPI" /f >/dev/null 2>&1
        # A desktop that began without a display has none for good.
        wineserver -k
        wineserver -w
    fi
    # The server stays while nobody talks to it, but not for ever, should nobody be left to end it.
    taskset -c "$(wine_core)" wineserver -p120
}

wine_display() {
    local number
    # The server writes the number of the free display it took; a failure ends the reading, too. It ends with
    # this shell, however that ends, but not by its Ctrl-C, which the programs on it must see first.
    exec {wine_display_out}< <(exec setpriv --pdeathsig TERM setsid Xvfb -displayfd 3 -screen 0 "${WINE_SCREEN:-1600x1000}x24" -nolisten tcp \
        3>&1 >/dev/null 2>&1 </dev/null)
    wine_display_process=$!
    if ! read -r -t 30 -u "$wine_display_out" number; then
        echo "The virtual display does not start." >&2
        return 1
    fi
    export DISPLAY=:$number
    # A second after the last program with windows has ended, Wine takes the desktop down. What starts at that
    # moment ends with it, without a window and without an error. This program keeps the desktop until the shell
    # ends, whose end it reads.
    exec {wine_desktop}> >(exec taskset -c "$(wine_core)" wine cmd >/dev/null 2>&1)
}

wine_close() {
    if [ -n "${WINEPREFIX:-}" ]; then
        wineserver -k 2>/dev/null || true
        wineserver -w 2>/dev/null || true
    fi
    rm -rf "$wine_memory.$$"
    if [ -n "$wine_display_process" ]; then
        kill "$wine_display_process" 2>/dev/null || true
        wait "$wine_display_process" 2>/dev/null || true
        wine_display_process=
    fi
}
