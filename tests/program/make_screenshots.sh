#!/bin/bash
# make_screenshots.sh STAGE OUT [WIDTH HEIGHT]: plays the scripts that take pictures of every page and window, and puts
# the pictures into OUT. QT_SCALE_FACTOR and VKT_PROGRAM_SCREEN (1920x1080) give sharper ones,
# VKT_PROGRAM_DARK=1 dark ones.
set -eu
here=$(dirname "$(readlink -f "$0")")
stage=$1
out=$2
export VKT_PROGRAM_ARGUMENTS="${3:-1280} ${4:-750}"
left=$(mktemp -d)
trap 'rm -rf "$left"' EXIT
mkdir -p "$out"
for script in "$here"/screens_*.drive "$here"/no_permission.drive; do
    "$here/run_program_test.sh" "$script" "$stage" "$left" | grep -E '^(FAIL|PROBLEM)' && exit 1
done
cp "$left"/*.png "$out"
