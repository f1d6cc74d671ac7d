#!/bin/sh
# Draws the program's icons with ImageMagick. The clock, the program's own, is stored at 48,
# 32, 24 and 16 pixels; the tree's and toolbar's pictures, small icons, at 32, 24 and 16 (at
# three times the normal size the 32-pixel picture is scaled up). The .ico files are committed; run this only to change them.
set -eu
cd "$(dirname "$0")"
tmp=$(mktemp --suffix=.png)
trap 'rm -f "$tmp"' EXIT
# Each .ico is stored with PNG entries (png-entries.py): the same pixels in a tenth of the bytes.
ico() {
    convert "$tmp" -define icon:auto-resize=48,32,24,16 "$1.ico"
    python3 png-entries.py "$1.ico" "$1.ico"
}

# The program and its tray icon: a clock, since it waits before it starts things.
convert -size 48x48 xc:none \
    -fill '#f4f1e8' -stroke '#2b4c7e' -strokewidth 4 -draw 'circle 24,24 24,4' \
    -stroke '#2b4c7e' -strokewidth 4 -draw 'line 24,24 24,11' \
    -stroke '#c0392b' -strokewidth 3 -draw 'line 24,24 34,29' \
    -fill '#2b4c7e' -stroke none -draw 'circle 24,24 24,21' "$tmp"
ico clock

# The startup tree's pictures. Each is drawn once on a grid of 16 units at 256 pixels and
# averaged down to each size: edges on whole units fall on pixel edges at 16 and 32
# pixels, and a 1-unit outline is one crisp pixel at 16, where the tree shows them.
# Outlines run on half units so that they cover whole pixels.
tree_ico() { # name mvg
    convert -size 256x256 xc:none -draw "scale 16,16 stroke-linejoin round $2" "$tmp"
    for size in 32 24 16; do
        convert "$tmp" -scale "${size}x${size}" "$tmp-$size.png"
    done
    convert "$tmp-32.png" "$tmp-24.png" "$tmp-16.png" "$1.ico"
    python3 png-entries.py "$1.ico" "$1.ico"
    rm -f "$tmp"-*.png
}

# One person, for the current user: a head above blue shoulders.
tree_ico tree-user '
    fill #2f6fb5 stroke #173a66 stroke-width 1
    path "M 2.5,15.5 L 2.5,12.5 Q 2.5,9.5 5.5,9.5 L 10.5,9.5 Q 13.5,9.5 13.5,12.5 L 13.5,15.5 Z"
    fill #f2c79a stroke #6b4423 circle 8,5 8,1.5'

# Two people, for all users: a green one behind, a blue one in front.
tree_ico tree-group '
    fill #3f9a52 stroke #1d5228 stroke-width 1
    path "M 7.5,13.5 L 7.5,10.5 Q 7.5,8.5 9.5,8.5 L 13.5,8.5 Q 15.5,8.5 15.5,10.5 L 15.5,13.5 Z"
    fill #f2c79a stroke #6b4423 circle 11.5,4.5 11.5,1.5
    fill #2f6fb5 stroke #173a66
    path "M 0.5,15.5 L 0.5,12.5 Q 0.5,10.5 2.5,10.5 L 7.5,10.5 Q 9.5,10.5 9.5,12.5 L 9.5,15.5 Z"
    fill #f2c79a stroke #6b4423 circle 5,6.5 5,3.5'

# A Startup folder: a yellow folder with a green start badge.
tree_ico tree-startup '
    fill #d99a1e stroke #7a4f00 stroke-width 1
    polygon 0.5,2.5 5.5,2.5 7,4.5 14.5,4.5 14.5,13.5 0.5,13.5
    fill #f7c948 polygon 0.5,6.5 14.5,6.5 14.5,13.5 0.5,13.5
    fill #2e9e44 stroke #135a25 circle 11.5,11.5 11.5,7.5
    fill #ffffff stroke none polygon 10,9 10,14 14,11.5'

# The registry: a block of four cubes, seen from above.
tree_ico tree-registry '
    stroke #13305f stroke-width 1
    fill #9cc8ff polygon 8,0.5 15.5,4.25 8,8 0.5,4.25
    fill #3b7dd8 polygon 0.5,4.25 8,8 8,15.5 0.5,11.75
    fill #1f4e9a polygon 8,8 15.5,4.25 15.5,11.75 8,15.5
    stroke-width 0.5 stroke #13305f fill none
    line 4.25,2.375 11.75,6.125 line 11.75,2.375 4.25,6.125
    line 4.25,6.125 4.25,13.625 line 0.5,8 8,11.75
    line 11.75,6.125 11.75,13.625 line 8,11.75 15.5,8'

# Delayed: an hourglass with its sand running.
tree_ico tree-delay '
    fill #e9f3fb stroke #3d5f80 stroke-width 1
    polygon 3.5,2.5 12.5,2.5 12.5,4 9,8 12.5,12 12.5,13.5 3.5,13.5 3.5,12 7,8 3.5,4
    fill #e0a83a stroke none
    polygon 5,4 11,4 8,7.2
    polygon 4.6,13 11.4,13 11.4,12.4 8,10 4.6,12.4
    stroke #e0a83a stroke-width 1 line 8,7 8,12
    fill #8b5a2b stroke #4a2c10 stroke-width 1
    rectangle 2.5,0.5 13.5,2.5
    rectangle 2.5,13.5 13.5,15.5'

# Stopped: a red no-entry sign.
tree_ico tree-stopped '
    fill #d93025 stroke #7f1710 stroke-width 1 circle 8,8 8,0.5
    fill #ffffff stroke none rectangle 3,6 13,10'

# The toolbar's pictures, on the same grid. Stop and Delay show the tree's own pictures.
# Save: a blue disk with its label and shutter.
tree_ico bar-save '
    fill #2f6fb5 stroke #173a66 stroke-width 1
    polygon 1.5,1.5 12.5,1.5 14.5,3.5 14.5,14.5 1.5,14.5
    fill #ffffff stroke #173a66 rectangle 3.5,8.5 12.5,14.5
    fill #c9d6e6 stroke #173a66 rectangle 4.5,1.5 10.5,5.5
    fill #173a66 stroke none rectangle 8,2.5 9.5,4.5
    stroke #9aa9bb stroke-width 1 line 5,10.5 11,10.5 line 5,12.5 11,12.5'

# Refresh: a green arrow running round in a circle.
tree_ico bar-refresh '
    fill none stroke #1d7a35 stroke-width 2.5 stroke-linecap round
    path "M 13,8 A 5,5 0 1 1 10.5,3.7"
    fill #1d7a35 stroke none polygon 8.5,0.5 15,2.5 10.5,7.5'

# Run: a green start button.
tree_ico bar-run '
    fill #2e9e44 stroke #135a25 stroke-width 1 circle 8,8 8,0.5
    fill #ffffff stroke none polygon 6,4 6,12 12.5,8'

# Properties: a sheet with lines and a pencil.
tree_ico bar-properties '
    fill #ffffff stroke #55606e stroke-width 1 polygon 2.5,0.5 10.5,0.5 13.5,3.5 13.5,15.5 2.5,15.5
    stroke #8a96a6 line 4.5,5.5 11.5,5.5 line 4.5,8.5 11.5,8.5 line 4.5,11.5 8.5,11.5
    fill #e0a83a stroke #7a4f00 polygon 9,14 14,9 15.5,10.5 10.5,15.5 8.5,15.5'
