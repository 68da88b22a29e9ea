#!/usr/bin/env bash
# Builds the engine for the browser: pixman and the library compiled to
# WebAssembly with Emscripten, and the small entry the exported pages run.
#
#   scripts/web.sh [BUILD_DIR]
#
# BUILD_DIR is the native build directory (default: build); the WebAssembly
# build goes to BUILD_DIR/web, where qvmovie-render --html finds it. Installs
# Emscripten from Debian when it is missing. pixman is built once from
# Debian's source package (static, without SIMD) and kept in BUILD_DIR/web.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(mkdir -p "${1:-build}" && cd "${1:-build}" && pwd)
web=$build/web
QV_WEB=1 bash "$root/scripts/setup.sh"

# Debian's emscripten runs on Debian's Node.js; another Node.js on the PATH
# finds Debian's modules (acorn and friends) through NODE_PATH.
export NODE_PATH=/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}

sudo=""
if [ "$(id -u)" != 0 ]; then sudo="sudo"; fi
# Emscripten keeps its prebuilt system libraries in a cache it writes to;
# a user who cannot write there works on a copy.
cache=$(em-config CACHE)
if [ ! -w "$cache" ]; then
  [ -d "$web/emcache" ] || { mkdir -p "$web" && cp -r "$cache" "$web/emcache"; }
  export EM_CACHE=$web/emcache
fi

pixman=$web/pixman
if [ ! -f "$pixman/lib/libpixman-1.a" ]; then
  src=$web/pixman-src
  rm -rf "$src" && mkdir -p "$src/parts" "$src/lists/partial"
  # The source package, through a scratch apt configuration that has a
  # deb-src entry for each of the system's deb ones.
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && sed 's/^Types: deb$/Types: deb-src/' "$f" >"$src/parts/$(basename "$f")"
  done
  if [ -f /etc/apt/sources.list ]; then
    sed -n 's/^deb \(.*\)/deb-src \1/p' /etc/apt/sources.list >"$src/parts/src.list"
  fi
  apt=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$src/parts"
       -o "Dir::State::Lists=$src/lists" -o APT::Sandbox::User=root)
  $sudo apt-get "${apt[@]}" -qq update
  # Only the upstream tarball is needed: a Debian diff that cannot be
  # fetched (apt then reports an error) does not matter.
  (cd "$src" && $sudo apt-get "${apt[@]}" -qq source --download-only pixman) || true
  tarball=$(ls "$src"/pixman_*.orig.tar.* 2>/dev/null | head -n 1)
  if [ -z "$tarball" ]; then
    echo "web.sh: could not fetch pixman's source package" >&2
    exit 1
  fi
  tar -xf "$tarball" -C "$src"
  cat >"$src/cross.txt" <<CROSS
[binaries]
c = 'emcc'
cpp = 'em++'
ar = 'emar'
ranlib = 'emranlib'
strip = 'true'

[host_machine]
system = 'emscripten'
cpu_family = 'wasm32'
cpu = 'wasm32'
endian = 'little'
CROSS
  off=()
  for o in loongson-mmi mmx sse2 ssse3 vmx arm-simd neon a64-neon iwmmxt mips-dspr2 \
           gnu-inline-asm tls openmp gtk libpng tests; do
    off+=("-D$o=disabled")
  done
  meson setup "$src/build" "$src"/pixman-*/ --cross-file "$src/cross.txt" \
    --prefix "$pixman" --libdir lib --default-library static --buildtype release \
    -Dc_args='-O2 -w' "${off[@]}"
  ninja -C "$src/build" -j"$(nproc)" install
  rm -rf "$src"
fi

emcmake cmake -S "$root/web" -B "$web" -DCMAKE_BUILD_TYPE=Release \
  -DQV_PIXMAN_PREFIX="$pixman"
cmake --build "$web" -j"$(nproc)"
