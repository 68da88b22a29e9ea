#!/usr/bin/env bash
# Plays a scene in a window (the demo movie when no scene is given):
# installs what is missing, builds the player, makes the demo's pictures and
# starts qvmovie-play. Further arguments go to the player.
#   scripts/play.sh [SCENE] [player options...]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$(nproc)" --target qvmovie-play qvmovie-demo-assets
if [ $# -gt 0 ] && [ "${1#-}" = "$1" ]; then
  scene=$1
  shift
  exec build/tools/qvmovie-play "$scene" "$@"
fi
build/tools/qvmovie-demo-assets build/demo-assets > /dev/null
exec build/tools/qvmovie-play examples/demo.json --pictures build/demo-assets "$@"
