#!/usr/bin/env bash
# Shows a BMP file with bmpview on a virtual display and compares the pixels of the window with those that another
# program reads from the file:
#   screenshot.sh BMPVIEW FILE.bmp
set -euo pipefail
if [ "${3:-}" != inside ]; then
    exec xvfb-run -a -s "-screen 0 640x480x24" "$0" "$1" "$2" inside
fi
bmptopnm -quiet "$2" >"$1.expected"
read -r width height < <(pamfile "$1.expected" | sed -E 's/.* ([0-9]+) by ([0-9]+) .*/\1 \2/')

"$1" --seconds 20 "$2" &
viewer=$!
trap 'kill $viewer 2>/dev/null || true' EXIT
for _ in $(seq 50); do # without a window manager the window is in the upper left corner
    xwd -root -silent | xwdtopnm -quiet | pamcut -width "$width" -height "$height" >"$1.seen"
    if cmp -s "$1.seen" "$1.expected"; then
        exit 0
    fi
    sleep 0.1
done
echo "the window does not show the picture"
exit 1
