#!/bin/sh
# Installs the Debian packages of packaging/packages.txt that are missing.
# Where none is missing nothing is installed and no rights are needed; where
# they cannot be installed, one line says which ones are missing.
set -u
list="$(dirname "$0")/../packaging/packages.txt"
missing=""
for package in $(sed 's/#.*//' "$list"); do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)
    [ "$status" = installed ] || missing="$missing $package"
done
[ -z "$missing" ] && exit 0

if [ "$(id -u)" = 0 ]; then
    as_root=""
elif command -v sudo >/dev/null; then
    as_root="sudo"
else
    echo "install these packages first:$missing" >&2
    exit 1
fi
log=$(mktemp)
echo "installing:$missing"
export DEBIAN_FRONTEND=noninteractive
# shellcheck disable=SC2086
if ! { $as_root apt-get update && $as_root apt-get install -y --no-install-recommends $missing; } \
    >"$log" 2>&1; then
    tail -5 "$log" >&2
    echo "these packages could not be installed:$missing (see $log)" >&2
    exit 1
fi
rm -f "$log"
