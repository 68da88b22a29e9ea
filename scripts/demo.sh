#!/usr/bin/env bash
# Renders the example movies: installs what is missing (scripts/setup.sh),
# configures and builds the library and the tools in the repository's build/
# folder, and renders every scene of examples/ to an animated GIF.
#
#   scripts/demo.sh [OUT_DIR]
#
# OUT_DIR (default: out/ in the repository; a relative path is taken from the
# current folder) receives demo.gif, falls.gif, ...; and demo.html, ... (the
# web pages of qvmovie-render --html) when scripts/web.sh has built the
# engine for the browser in build/web. Prints one line per file written;
# the build's output goes to build/demo-build.log and is shown only when the
# build fails. Afterwards "cmake --install build --prefix P" installs the
# library and the tools.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=${1:-$root/out}
bash "$root/scripts/setup.sh"

build=$root/build
log=$build/demo-build.log
mkdir -p "$build"
# The tools an install holds: the renderer, and the player when SDL2 is there.
targets=(qvmovie-render)
if pkg-config --exists sdl2; then targets+=(qvmovie-play); fi
if ! { cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo &&
       cmake --build "$build" -j"$(nproc)" --target "${targets[@]}"; } >"$log" 2>&1; then
  cat "$log"
  echo "demo: the build failed (log: $log)" >&2
  exit 1
fi
echo "Built ${targets[*]} in $build"

mkdir -p "$out"
for scene in "$root"/examples/*.json; do
  name=$(basename "$scene" .json)
  "$build/tools/qvmovie-render" "$scene" -q -o "$out/$name.gif"
  echo "Rendered $out/$name.gif"
  if [ -f "$build/web/qvmovie-engine.wasm" ]; then
    "$build/tools/qvmovie-render" "$scene" -q --html "$out/$name.html"
    echo "Exported $out/$name.html"
  fi
done
