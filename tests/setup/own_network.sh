#!/bin/bash
# Runs a command in a network of its own, in which this machine is the maker's server:
#   own_network.sh HOST COMMAND...
# So the very program that people get can be tried with a server of the tests: it asks for HOST, and checks the
# certificate. Takes root, or user namespaces.
set -euo pipefail
if [ "${1:-}" != --inside ]; then
    namespaces=(unshare --mount --net)
    [ "$(id -u)" -eq 0 ] || namespaces+=(--map-root-user)
    exec "${namespaces[@]}" "$0" --inside "$@"
fi
host=$2
shift 2
hosts=$(mktemp)
printf '127.0.0.1 localhost %s\n' "$host" >"$hosts"
mount --bind "$hosts" /etc/hosts
rm -f "$hosts"
# SIOCSIFFLAGS with IFF_UP and IFF_RUNNING: the loopback device starts switched off.
python3 -c 'import fcntl, socket, struct
fcntl.ioctl(socket.socket(socket.AF_INET, socket.SOCK_DGRAM), 0x8914, struct.pack("16sh", b"lo", 0x41))'
exec "$@"
