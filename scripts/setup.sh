#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the tools need, when
# they are missing. Safe to run again: it installs nothing that is present.
set -euo pipefail

packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev
          libpixman-1-dev libpng-dev libgif-dev nlohmann-json3-dev
          clang libclang-rt-14-dev valgrind libsdl2-dev libsdl2-gfx-dev xvfb xauth)
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
