#!/bin/sh
# Runs the player in a real X server (Xvfb, started here on a free display)
# on the demo scene, takes a screenshot at moment 150 and compares it with
# what the render tool draws for that moment, colour for colour, with
# ImageMagick's compare (the picture sits at the screenshot's top-left
# corner; the player's bar below it is not compared).
#
#   run.sh PLAYER RENDER DEMO_ASSETS SCENE WORK_DIR
#
# Exit status 77 (skipped) when Xvfb or ImageMagick is not installed.
set -u
if [ $# -ne 5 ]; then
  echo "usage: $0 PLAYER RENDER DEMO_ASSETS SCENE WORK_DIR" >&2
  exit 2
fi
player=$1 render=$2 assets=$3 scene=$4 work=$5
for tool in Xvfb compare identify; do
  if ! command -v $tool >/dev/null 2>&1; then
    echo "$tool is not installed: skipped"
    exit 77
  fi
done
scale=2
here=$(cd "$(dirname "$0")" && pwd)
# In sanitizer builds: what the system's libraries keep is not the player's.
LSAN_OPTIONS="suppressions=$here/lsan.supp:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
export LSAN_OPTIONS
rm -rf "$work"
mkdir -p "$work"
"$assets" "$work/assets" >/dev/null || exit 1

# Xvfb picks a free display itself and writes its number when it is ready.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$work/display" \
  >"$work/xvfb.log" 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null; wait $xvfb 2>/dev/null' EXIT INT TERM
tries=0
while [ ! -s "$work/display" ]; do
  if ! kill -0 $xvfb 2>/dev/null || [ $tries -ge 200 ]; then
    echo "Xvfb did not start:"
    cat "$work/xvfb.log"
    exit 1
  fi
  tries=$((tries + 1))
  sleep 0.05
done
display=:$(head -n 1 "$work/display")
echo "Xvfb on display $display"

# Six moments from 140, stepped as fast as possible: the last is 150.
# SDL's software renderer: no OpenGL driver is loaded (and unloaded at exit,
# which would leave its allocations without a name in leak reports).
DISPLAY=$display SDL_VIDEODRIVER=x11 SDL_RENDER_DRIVER=software SDL_FRAMEBUFFER_ACCELERATION=0 \
  "$player" "$scene" --pictures "$work/assets" \
  --scale $scale --at 140 --frames 6 --screenshot "$work/player.png" --stats || exit 1
"$render" "$scene" --pictures "$work/assets" --scale $scale --png-at 150 "$work/render.png" ||
  exit 1
size=$(identify -format '%wx%h' "$work/render.png") || exit 1
shot=$(identify -format '%wx%h' "$work/player.png") || exit 1
if [ "${shot%x*}" != "${size%x*}" ] || [ "${shot#*x}" -lt "${size#*x}" ]; then
  echo "screenshot is $shot, expected ${size%x*} wide and at least ${size#*x} high"
  exit 1
fi
# The number of pixels whose colours differ; compare exits 1 when any does.
differ=$(compare -metric AE "$work/render.png" "$work/player.png[$size+0+0]" null: 2>&1)
status=$?
echo "pixels that differ: $differ of $size"
exit $status
