#!/bin/sh
# Makes the pictures that the program loads from their SVG sources: NAME.png at the source's own size and NAME@2x.png
# at twice that, beside each NAME.svg. Needs rsvg-convert (package librsvg2-bin).
set -eu
cd "$(dirname "$0")/../res/default/images"
for source in *.svg; do
    name=${source%.svg}
    rsvg-convert -o "$name.png" "$source"
    rsvg-convert -z 2 -o "$name@2x.png" "$source"
done
