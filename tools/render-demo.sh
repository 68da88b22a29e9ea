#!/usr/bin/env bash
# Renders the demo scene to an animated GIF (the README's picture too).
#
#   tools/render-demo.sh BUILD_DIR [OUT.gif [STILL.png]]
#
# BUILD_DIR is a build directory in which the target qvmovie-render is built.
# The GIF goes to OUT.gif (default out/demo.gif); with STILL.png, moment 110
# of the demo is also written there, twice enlarged (the README's picture).
# Relative paths are taken from the current folder.
set -euo pipefail

if [ $# -lt 1 ] || [ $# -gt 3 ]; then
  echo "usage: $0 BUILD_DIR [OUT.gif [STILL.png]]" >&2
  exit 2
fi
build=$1
out=${2:-out/demo.gif}
root=$(cd "$(dirname "$0")/.." && pwd)

mkdir -p "$(dirname "$out")"
"$build/tools/qvmovie-render" "$root/examples/demo.json" -q -o "$out"
if [ $# -eq 3 ]; then
  "$build/tools/qvmovie-render" "$root/examples/demo.json" -q --scale 2 --png-at 110 "$3"
fi
echo "wrote $out"
