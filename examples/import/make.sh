#!/usr/bin/env bash
# Makes the import examples again from their sources, with other programs'
# encoders: netpbm's ppmtoilbm (plus colour ranges, which netpbm does not
# write, added by add-ranges.py) and gifsicle; then imports both.
#   examples/import/make.sh [path of qvmovie-import]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
import=${1:-qvmovie-import}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

python3 "$here/make-sources.py" "$work"
ppmtoilbm -maxplanes 8 -map "$work/waterfall-map.ppm" -compress "$work/waterfall.ppm" > "$work/plain.lbm"
# Waterfall 10 steps/s down, river 6 steps/s backward, embers 12 steps/s,
# stars off.
python3 "$here/add-ranges.py" "$work/plain.lbm" "$here/waterfall.lbm" \
  crng:24:39:2731 crng:40:47:1638:reverse ccrt:48:55:83333 crng:56:63:1365:off

frames=()
for k in $(seq 0 11); do
  pamtogif "$work/ball-$k.ppm" > "$work/ball-$k.gif" 2>/dev/null
  frames+=(-d "$([ $((k % 3)) = 2 ] && echo 6 || echo 7)" "$work/ball-$k.gif")
done
gifsicle -O3 --loopcount=forever "${frames[@]}" > "$here/ball.gif"

"$import" "$here/waterfall.lbm" -o "$here/waterfall.json"
"$import" "$here/ball.gif" -o "$here/ball.json"
