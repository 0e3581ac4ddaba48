#!/bin/sh
# Makes the pictures that the program loads from their SVG sources: NAME.png at the source's own size and NAME@2x.png
# at twice that, beside each NAME.svg, and those of the dark theme in dark/, with the colours that dark.qss gives to the
# names which default.qss has for those of the source. Needs rsvg-convert (package librsvg2-bin).
set -eu
cd "$(dirname "$0")/../res/default/images"
colour() { sed -n "s/^@$2: \(#[0-9A-F]*\);\$/\1/p" "../styles/$1.qss"; }
to_dark=$(mktemp)
trap 'rm -f "$to_dark"' EXIT
# White is what stands on the accent colour.
for name in text off-text accent line error on-accent; do
    printf 's/"%s"/"%s"/g\n' "$(colour default $name)" "$(colour dark $name)"
done >"$to_dark"
mkdir -p dark
for source in *.svg; do
    name=${source%.svg}
    rsvg-convert -o "$name.png" "$source"
    rsvg-convert -z 2 -o "$name@2x.png" "$source"
    sed -f "$to_dark" "$source" | rsvg-convert -o "dark/$name.png"
    sed -f "$to_dark" "$source" | rsvg-convert -z 2 -o "dark/$name@2x.png"
done
