#!/usr/bin/env bash
# Plays a scene in a window (the demo movie when no scene is given): installs
# what is missing (scripts/setup.sh), builds the player in the repository's
# build/ folder and starts qvmovie-play. A relative SCENE is taken from the
# current folder; further arguments go to the player (qvmovie-play --help).
#
#   scripts/play.sh [SCENE] [player options...]
#
# Prints nothing but the player's own messages; the build's output goes to
# build/play-build.log and is shown only when the build fails.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"

build=$root/build
log=$build/play-build.log
mkdir -p "$build"
if ! { cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo &&
       cmake --build "$build" -j"$(nproc)" --target qvmovie-play; } >"$log" 2>&1; then
  cat "$log"
  echo "play: the build failed (log: $log)" >&2
  exit 1
fi
scene=$root/examples/demo.json
if [ $# -gt 0 ] && [ "${1#-}" = "$1" ]; then
  scene=$1
  shift
fi
exec "$build/tools/qvmovie-play" "$scene" "$@"
