#!/bin/sh
# Draws the program's icons with ImageMagick on a 48x48 canvas and stores each as an .ico of
# 48, 32, 24 and 16 pixels. The .ico files are committed; run this only to change them.
set -eu
cd "$(dirname "$0")"
tmp=$(mktemp --suffix=.png)
trap 'rm -f "$tmp"' EXIT
ico() { convert "$tmp" -define icon:auto-resize=48,32,24,16 "$1.ico"; }

# The program and its tray icon: a clock, since it waits before it starts things.
convert -size 48x48 xc:none \
    -fill '#f4f1e8' -stroke '#2b4c7e' -strokewidth 4 -draw 'circle 24,24 24,4' \
    -stroke '#2b4c7e' -strokewidth 4 -draw 'line 24,24 24,11' \
    -stroke '#c0392b' -strokewidth 3 -draw 'line 24,24 34,29' \
    -fill '#2b4c7e' -stroke none -draw 'circle 24,24 24,21' "$tmp"
ico clock
cp clock.ico tolvane.ico
