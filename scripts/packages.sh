#!/bin/bash
# Installs the Debian 12 packages that are missing; when all are there it takes a blink and needs no network.
#   scripts/packages.sh run      what ./run needs: building the program, running it, taking a screenshot
#   scripts/packages.sh release  that, and what makes the ZIP, the setup and a release
#   scripts/packages.sh test     that, and what ./test needs; and the packages named besides
set -euo pipefail

packages=(
    cmake ninja-build g++-mingw-w64-x86-64-posix  # the program; cmake asks for a native compiler in ./test only
    wine wine64 xvfb xdotool imagemagick          # the program's window, found and photographed
    # What Wine's windows use when it is there; without the first, text is not smoothed.
    libxrender1 libxcomposite1 libxcursor1 libxfixes3 libxi6 libxinerama1 libxrandr2 fonts-dejavu-core
    python3 util-linux locales                    # the scripts; German for Wine
)
release=(cmark-gfm git nsis openssl osslsigncode)
case "${1:-}" in
    run) ;;
    release) packages+=("${release[@]}") ;;
    bench) packages+=(g++ libsqlite3-dev rsync rclone libfuse3-dev pkg-config) ;;
    test)
        packages+=("${release[@]}" g++ googletest clang libclang-rt-dev clang-format clang-tidy cppcheck)
        # The file system with faults, and the disks whose power fails.
        packages+=(libfuse3-dev pkg-config mount xfsprogs e2fsprogs btrfs-progs dosfstools) ;;
    *) echo "usage: $0 run|release|test|bench [PACKAGE...]" >&2; exit 64 ;;
esac
packages+=("${@:2}")

missing=()
installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null || true)
for package in "${packages[@]}"; do
    grep -qx "$package installed" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
    echo "These packages are missing, and installing them takes root: ${missing[*]}" >&2
    exit 77
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# Another apt may be at work on a machine that has just started: wait for it rather than fail.
install() {
    apt-get -o DPkg::Lock::Timeout=300 update &&
        apt-get -o DPkg::Lock::Timeout=300 install -y --no-install-recommends "${missing[@]}"
}
# apt refuses to work on after an installation that was cut off, by a machine that was switched off say, until that one
# is finished.
if ! { install || { dpkg --configure -a && install; }; } </dev/null >"$log" 2>&1; then
    cat "$log" >&2
    echo "The packages could not be installed." >&2
    exit 1
fi
