#!/usr/bin/env bash
# Installs the Debian packages the build, the tests, the tools and the Debian
# packaging need, when they are missing. Safe to run again: it installs
# nothing that is present. Prints one line naming what it installs, nothing
# when everything is there.
#   scripts/setup.sh
set -euo pipefail

packages=(cmake g++ make pkg-config doxygen libgtest-dev libgmock-dev libbenchmark-dev
          libpixman-1-dev libpng-dev libgif-dev nlohmann-json3-dev
          clang libclang-rt-14-dev valgrind libsdl2-dev libsdl2-gfx-dev xvfb xauth
          dpkg-dev man-db netpbm gifsicle imagemagick python3-pil)
# The engine for the browser and its tests (scripts/web.sh sets QV_WEB=1).
if [ "${QV_WEB:-0}" = 1 ]; then
  packages+=(emscripten meson ninja-build python3 chromium)
fi
missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  if [ "$(id -u)" != 0 ]; then sudo="sudo"; fi
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
