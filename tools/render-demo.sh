#!/usr/bin/env bash
# Generates the demo's pictures and renders the demo scene to an animated GIF.
#
#   tools/render-demo.sh BUILD_DIR [OUT.gif [STILL.png]]
#
# BUILD_DIR is a build directory in which the targets qvmovie-render and
# qvmovie-demo-assets are built. The pictures go to BUILD_DIR/demo-assets;
# the GIF to OUT.gif (default out/demo.gif). With STILL.png, moment 110 of
# the demo is also written there, twice enlarged (the README's picture).
set -euo pipefail

if [ $# -lt 1 ] || [ $# -gt 3 ]; then
  echo "usage: $0 BUILD_DIR [OUT.gif [STILL.png]]" >&2
  exit 2
fi
build=$1
out=${2:-out/demo.gif}
root=$(cd "$(dirname "$0")/.." && pwd)

"$build/tools/qvmovie-demo-assets" "$build/demo-assets"
"$build/tools/qvmovie-render" "$root/examples/demo.json" --pictures "$build/demo-assets" -o "$out"
if [ $# -eq 3 ]; then
  "$build/tools/qvmovie-render" "$root/examples/demo.json" --pictures "$build/demo-assets" \
    --scale 2 --png-at 110 "$3"
fi
echo "wrote $out"
