#!/bin/bash
# Makes a release of the last commit twice, in two folders and at two times, and compares every file; then tries to
# make one of a checkout that is not clean, and of a commit without the tag.
set -euo pipefail
cd "$(dirname "$0")/../.."
version=$(sed -n 's/^project(Vardeko VERSION \([0-9]*\.[0-9]*\).*/\1/p' CMakeLists.txt)
work=$PWD/build/release-twice
rm -rf "$work"
mkdir -p "$work/a folder"
for checkout in "$work/one" "$work/a folder/of another name"; do
    git clone --quiet . "$checkout"
    git -C "$checkout" tag "v$version"
    "$checkout/scripts/release.sh" >"$checkout.log" 2>&1 || { cat "$checkout.log" >&2; exit 1; }
    sleep 2
done
diff -r "$work/one/build/release/Vardeko-$version" "$work/a folder/of another name/build/release/Vardeko-$version"
[ "$(find "$work/one/build/release/Vardeko-$version" -type f | wc -l)" -eq 7 ]

refused() {
    rm -rf build/release
    if answer=$(scripts/release.sh 2>&1) || [ -e build/release ] || [[ $answer != *"$1"* ]]; then
        echo "A release was made that should not be: $answer" >&2
        exit 1
    fi
}
cd "$work/one"
touch forgotten
refused "not clean"
rm forgotten
git tag -d "v$version" >/dev/null
refused "does not bear the tag"
rm -rf "$work"
