#!/bin/sh
# Makes the program's icons from packaging/icon/vktcfgtools.svg: NUMBERxNUMBER.png for Linux desktops and one .ico of all
# sizes for Windows. Needs rsvg-convert (package librsvg2-bin) and icotool (package icoutils).
set -eu
cd "$(dirname "$0")/../packaging/icon"
sizes="16 24 32 48 64 128 256"
for size in $sizes; do
    rsvg-convert -w "$size" -h "$size" -o "${size}x$size.png" vktcfgtools.svg
done
# shellcheck disable=SC2046 # a list of words
icotool -c -o vktcfgtools.ico $(for size in ${sizes% *}; do echo "${size}x$size.png"; done) --raw=256x256.png
