#!/bin/sh
# The player without a window system exits 1 at once with a message instead
# of playing unseen; asked for headless work (--frames with --screenshot) it
# still draws.
#
#   no_display.sh PLAYER SCENE WORK_DIR
set -u
if [ $# -ne 3 ]; then
  echo "usage: $0 PLAYER SCENE WORK_DIR" >&2
  exit 2
fi
player=$1 scene=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
LSAN_OPTIONS="suppressions=$here/xvfb/lsan.supp:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
export LSAN_OPTIONS
rm -rf "$work"
mkdir -p "$work"
unset DISPLAY WAYLAND_DISPLAY SDL_VIDEODRIVER

out=$(timeout 10 "$player" "$scene" 2>&1 </dev/null)
rc=$?
if [ $rc -ne 1 ]; then
  echo "exit status $rc (124: still running after 10 s), expected 1; output: $out"
  exit 1
fi
if ! printf '%s\n' "$out" | grep -q "no window system"; then
  echo "exit status 1 but no message naming the missing window system: $out"
  exit 1
fi
echo "without a display: exit status 1, '$(printf '%s\n' "$out" | grep "no window system")'"

# Only --frames or only --screenshot is no headless request.
for args in "--frames 2" "--screenshot $work/never.png"; do
  # shellcheck disable=SC2086
  timeout 10 "$player" "$scene" $args >/dev/null 2>&1 </dev/null
  rc=$?
  if [ $rc -ne 1 ] || [ -e "$work/never.png" ]; then
    echo "with only $args: exit status $rc, expected 1 and no file"
    exit 1
  fi
done

# SDL's software renderer: no OpenGL driver is loaded (and unloaded at exit,
# which would leave its allocations without a name in leak reports).
if ! SDL_RENDER_DRIVER=software SDL_FRAMEBUFFER_ACCELERATION=0 timeout 60 \
    "$player" "$scene" --frames 2 --screenshot "$work/shot.png" >"$work/headless.log" 2>&1 ||
    [ ! -s "$work/shot.png" ]; then
  echo "--frames 2 --screenshot without a display failed:"
  cat "$work/headless.log"
  exit 1
fi
echo "without a display: --frames 2 --screenshot wrote $work/shot.png"
