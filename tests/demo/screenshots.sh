#!/usr/bin/env bash
# The demo under a virtual display, photographed from outside: usage
#   screenshots.sh KERRIN GL_DRIVER GRAB GAME_FOLDER WORK DRIVER_FOLDER SHOT...
# copies the game and the driver's scripts to WORK, runs the driver's shots.script there (it loads
# the game and sets the scenes up), and for
# each SHOT waits for the driver's file SHOT.ready, grabs the screen into SHOT.png, runs the
# driver's SHOT.after if there is one (clicks and keys that lead to the next scene), and answers
# with SHOT.done. Each picture must hold more than a handful of colours: a black, blank or
# single-colour screen fails. Run inside xvfb-run.
set -euo pipefail
kerrin=$1 gl=$2 grab=$3 game=$4 work=$5 driver=$6
shift 6
rm -rf "$work"
mkdir -p "$work"
cp -r "$game"/. "$work"
cp "$driver"/*.script "$work"/
cd "$work"
# The GL driver, if named, stays loaded for the whole run (see CMakeLists.txt).
LD_PRELOAD=$gl "$kerrin" -i shots.script > run.log 2>&1 &
pid=$!
# Generous: a loaded machine starts the software renderer slowly.
limit=600
for shot in "$@"; do
  waited=0
  until [ -e "$shot.ready" ]; do
    if ! kill -0 "$pid" 2>/dev/null; then
      echo "the demo ended before the shot \"$shot\":"; cat run.log; exit 1
    fi
    sleep 0.1
    waited=$((waited + 1))
    if [ "$waited" -gt "$limit" ]; then
      echo "no \"$shot\" within a minute:"; cat run.log; kill "$pid"; exit 1
    fi
  done
  line=$("$grab" "$shot.png")
  echo "$shot: $line"
  colours=${line##*, }
  colours=${colours%% *}
  if [ -x "$driver/$shot.after" ]; then "$driver/$shot.after"; fi
  touch "$shot.done"
  if [ "$colours" -lt 16 ]; then
    echo "the shot \"$shot\" is nearly one colour"; kill "$pid"; exit 1
  fi
done
if ! wait "$pid"; then
  echo "the demo did not end cleanly:"; cat run.log; exit 1
fi
if grep -q "error" run.log; then
  echo "the demo reported errors:"; cat run.log; exit 1
fi
