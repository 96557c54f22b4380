#!/bin/sh
# Runs a command with the test server of the update check beside it:
#   run_with_server.sh wine .../update_test.exe [arguments]
# The command finds the server through VARDEKO_TEST_... in its environment.
set -eu

here=$(CDPATH= cd -- "$(dirname -- "$0")" && pwd)
folder=$(mktemp -d)
server=
finish() {
    exec 3>&- || true
    if [ -n "$server" ]; then
        wait "$server" || true
    fi
    rm -rf "$folder"
}
trap finish EXIT
trap 'exit 130' INT TERM

# The server lives as long as this script holds the writing end of its standard input.
mkfifo "$folder/alive"
python3 "$here/https_server.py" "$folder" <"$folder/alive" &
server=$!
exec 3>"$folder/alive"

tries=0
while [ ! -e "$folder/environment" ]; do
    tries=$((tries + 1))
    if [ "$tries" -gt 200 ] || ! kill -0 "$server" 2>/dev/null; then
        echo "run_with_server.sh: the test server did not start" >&2
        exit 1
    fi
    sleep 0.1
done
while IFS= read -r line; do
    export "${line?}"
done <"$folder/environment"

# The command must not keep the server alive.
status=0
"$@" 3>&- || status=$?
exit "$status"
