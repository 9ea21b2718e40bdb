#!/usr/bin/env bash
# Drives controls.script through the X server: usage run.sh KERRIN GL_DRIVER WORK, inside
# xvfb-run. The window is 400 pixels across, so a pixel of pointer motion is 1/400 of the
# desktop's width. The pointer starts at the desktop's top left; the moves take it to the button
# (click, then the key A), to the cover over another control (click), and to where a hidden
# control stands (click). Prints what the script printed.
set -euo pipefail
kerrin=$1 gl=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"
cp "$here"/*.script "$work"/
cd "$work"
LD_PRELOAD=$gl "$kerrin" -i controls.script > out.txt 2>&1 &
pid=$!
for _ in $(seq 600); do
  [ -e ready ] && break
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.1
done
if [ ! -e ready ]; then cat out.txt; kill "$pid" 2>/dev/null; exit 1; fi
window=$(xdotool search --name "controls under test" | head -1)
xdotool windowfocus --sync "$window"
step() { xdotool "$@"; sleep 0.3; }
step mousemove_relative -- 200 150
step click 1
step key a
step mousemove_relative -- -120 -90
step click 1
step mousemove_relative -- 240 0
step click 1
touch input.done
wait "$pid"
cat out.txt
