#!/bin/bash
# Signs a program file in place and verifies the signature:
#   scripts/sign.sh FILE
# VARDEKO_SIGN_CERTIFICATE  the certificate with its key, a PKCS #12 file
# VARDEKO_SIGN_PASSWORD     a file that holds its password
# VARDEKO_SIGN_AUTHORITY    who must have issued it (PEM); the system's authorities if not set
# VARDEKO_SIGN_TIME         address of a time stamp server; without it the signature ends with the certificate
set -euo pipefail
file=$1
authorities=/etc/ssl/certs/ca-certificates.crt
options=(-pkcs12 "$VARDEKO_SIGN_CERTIFICATE" -readpass "$VARDEKO_SIGN_PASSWORD" -h sha256 -n Vardeko)
[ -z "${VARDEKO_SIGN_TIME:-}" ] || options+=(-ts "$VARDEKO_SIGN_TIME")
trap 'rm -f "$file.signed"' EXIT
run() {
    local log
    if ! log=$("$@" 2>&1); then
        echo "$log" >&2
        echo "$file could not be signed." >&2
        exit 1
    fi
}
rm -f "$file.signed"
run osslsigncode sign "${options[@]}" -in "$file" -out "$file.signed"
run osslsigncode verify -CAfile "${VARDEKO_SIGN_AUTHORITY:-$authorities}" -TSA-CAfile "$authorities" -in "$file.signed"
chmod --reference="$file" "$file.signed"
mv "$file.signed" "$file"
