#!/usr/bin/env bash
# Renders the demo movie: installs what is missing, builds the tools, makes
# the demo's source pictures and renders examples/demo.json to out/demo.gif.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc)" --target qvmovie-render qvmovie-demo-assets
bash tools/render-demo.sh build out/demo.gif
echo "Rendered out/demo.gif"
