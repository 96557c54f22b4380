#!/bin/bash
# Runs a command on Debian 13, whose Wine 10 answers several calls as Windows does and Debian 12's does not:
#   scripts/second_platform.sh scripts/in_wine.sh wine build/windows-x64-checked/bin/support_test.exe
# The system is installed under build/second-platform the first time, from the mirror that apt uses. It sees this
# checkout at the same path, with Wine prefixes of its own. All of it lives in name spaces of its own, so mounts and
# processes are gone with this script, however that ends. One command at a time: the next one waits.
# Exit code 77, and a line that says why, where such a system cannot be had.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$root/build/second-platform
# The number is raised when what is installed changes.
system=$folder/system-1
release=trixie
packages=(
    wine wine64 xvfb xdotool imagemagick libxrender1 libxcomposite1 libxcursor1 libxfixes3 libxi6 libxinerama1
    libxrandr2 fonts-dejavu-core python3 util-linux locales openssl iproute2
)

skip() {
    echo "The second platform is skipped: $1."
    exit 77
}

# As apt has it: one that is set up for this release's predecessor holds this release as well.
mirror() {
    # shellcheck disable=SC2016  # apt fills these in
    apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
        sed -n "s/^Debian $(. /etc/os-release && echo "$VERSION_CODENAME") //p" | head -n 1
}

# Complete or not there: it is made under another name.
install_system() {
    local from
    from=$(mirror)
    [ -n "$from" ] || skip "apt has no mirror of Debian"
    rm -rf "$system.new"
    eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
    [ -z "${http_proxy:-}" ] || export http_proxy
    debootstrap --variant=minbase "$release" "$system.new" "$from"
    cp -L /etc/resolv.conf "$system.new/etc/"
    # No service is to start.
    printf '#!/bin/sh\nexit 101\n' >"$system.new/usr/sbin/policy-rc.d"
    chmod 755 "$system.new/usr/sbin/policy-rc.d"
    # Nothing is lost with what a power cut spoils here.
    echo force-unsafe-io >"$system.new/etc/dpkg/dpkg.cfg.d/fast"
    mount -t proc proc "$system.new/proc"
    chroot "$system.new" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${packages[@]}"
    chroot "$system.new" apt-get clean
    umount "$system.new/proc"
    mv -T "$system.new" "$system"
}

# The rest runs in name spaces of its own.
inside() {
    if [ ! -d "$system" ]; then
        echo "Installing Debian 13 under ${folder#"$root/"}." >&2
        if ! (install_system) >"$folder/install.log" 2>&1; then
            ! grep '^The second platform is skipped' "$folder/install.log" || exit 77
            ! grep -q 'Failed getting release file' "$folder/install.log" || skip "the mirror cannot be reached"
            tail -n 30 "$folder/install.log" >&2
            exit 1
        fi
    fi
    # As a mount it may have name spaces inside.
    mount --bind "$system" "$system"
    mount --bind /dev "$system/dev"
    mount -t proc proc "$system/proc"
    mount -t tmpfs tmpfs "$system/dev/shm"
    mount -t tmpfs tmpfs "$system/tmp"
    mkdir -p "$system$root" "$folder/wine" "$root/build/wine"
    mount --bind "$root" "$system$root"
    mount --bind "$folder/wine" "$system$root/build/wine"
    unset LC_ALL LOCPATH
    # Displays and test servers have names and numbers in the network, and shall not meet those of other runs.
    exec unshare --net chroot "$system" env HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        sh -c 'ip link set lo up && cd "$1" && shift && exec "$@"' sh "$root" "$@"
}

if [ "${1:-}" = --inside ]; then
    shift
    inside "$@"
fi
[ $# -gt 0 ] || { sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2; exit 64; }
[ "$(id -u)" -eq 0 ] || skip "it takes root"
unshare --mount --pid --fork sh -c 'mount -t tmpfs tmpfs /mnt && chroot / true' 2>/dev/null ||
    skip "this system does not let a program mount and change its root"
"$root/scripts/packages.sh" test debootstrap debian-archive-keyring || skip "debootstrap cannot be had"
mkdir -p "$folder"
exec {lock}>"$folder/lock"
flock "$lock"
trap 'kill -KILL $command 2>/dev/null; exit 130' INT TERM HUP
setpriv --pdeathsig KILL unshare --mount --pid --fork --kill-child "$0" --inside "$@" &
# Waiting in the background lets the traps run at once.
command=$!
wait $command
