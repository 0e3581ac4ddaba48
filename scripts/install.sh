#!/bin/sh
# scripts/install.sh SECTION...: installs what is missing of the named sections of packages.txt.
# Nothing is asked of the network, and no rights are needed, when all of it is there.
set -eu
list=$(dirname "$0")/../packages.txt

packages_of() {
    awk -v section="[$1]" '
        /^#/ || NF == 0 { next }
        /^\[/ { inside = ($1 == section); found = found || inside; next }
        inside { print $1 }
        END { exit !found }
    ' "$list" || { echo "install: packages.txt has no section [$1]" >&2; exit 2; }
}

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "install: this is no Debian system; the packages that are needed stand in packages.txt" >&2
    exit 0
fi

missing=
for section in "$@"; do
    packages=$(packages_of "$section")
    for package in $packages; do
        is_installed "$package" || missing="$missing $package"
    done
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
    as_root=
elif command -v sudo >/dev/null; then
    as_root=sudo
else
    echo "install: these packages are missing, and this is neither root nor a user with sudo:$missing" >&2
    echo "install: run as root:  apt-get install --no-install-recommends$missing" >&2
    exit 1
fi

echo "install:$missing"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get -q update
# shellcheck disable=SC2086 # a list of words
$as_root env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends $missing
