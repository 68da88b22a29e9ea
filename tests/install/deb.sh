#!/bin/sh
# Makes the Debian packages of a build with cpack, checks their contents and
# dependencies, unpacks them into a scratch root (dpkg -x) and runs the tools
# from there on the installed examples, from another folder and with no
# library path set. With apt-get, a simulated install checks that the
# dependencies resolve.
#
#   deb.sh CPACK BUILD_DIR WORK_DIR
#
# Exit status 77 (skipped) without dpkg-deb and dpkg-shlibdeps (dpkg-dev).
set -u
if [ $# -ne 3 ]; then
  echo "usage: $0 CPACK BUILD_DIR WORK_DIR" >&2
  exit 2
fi
cpack=$1 build=$2 work=$3
for tool in dpkg-deb dpkg-shlibdeps; do
  if ! command -v $tool >/dev/null 2>&1; then
    echo "$tool is not installed: skipped"
    exit 77
  fi
done
fail() {
  echo "FAILED: $*"
  exit 1
}
rm -rf "$work"
mkdir -p "$work/root" "$work/elsewhere"
work=$(cd "$work" && pwd)
if ! "$cpack" -G DEB --config "$build/CPackConfig.cmake" -B "$work/packages" \
    >"$work/cpack.log" 2>&1; then
  cat "$work/cpack.log"
  fail "cpack -G DEB"
fi

# package NAME: the one .deb file of package NAME.
package() {
  set -- "$work"/packages/"$1"_*.deb
  [ $# -eq 1 ] && [ -f "$1" ] || fail "no single package file $1"
  echo "$1"
}
lib=$(package libqvmovie0) || exit 1
dev=$(package libqvmovie-dev) || exit 1
version=$(dpkg-deb -f "$lib" Version)
echo "libqvmovie0 $version: Depends: $(dpkg-deb -f "$lib" Depends)"

# has DEB FIELD PATTERN: the control field matches the extended regex.
has() {
  dpkg-deb -f "$1" "$2" | grep -Eq "$3" ||
    fail "$(basename "$1"): $2 '$(dpkg-deb -f "$1" "$2")' lacks '$3'"
}
# holds DEB PATH...: the package holds each path.
holds() {
  deb=$1
  shift
  dpkg-deb -c "$deb" | awk '{print $6}' >"$work/list"
  for p in "$@"; do
    grep -qx "./$p" "$work/list" || fail "$(basename "$deb") does not hold $p"
  done
}
has "$lib" Depends 'libpixman-1-0'
has "$lib" Depends 'libstdc\+\+6'
dpkg-deb -I "$lib" shlibs | grep -q "^libqvmovie 0 libqvmovie0" || fail "libqvmovie0 has no shlibs"
holds "$lib" usr/lib/libqvmovie.so.0
holds "$dev" usr/lib/libqvmovie.so usr/include/qvmovie/QvMovie.h \
  usr/lib/cmake/QvMovie/QvMovieConfig.cmake usr/lib/pkgconfig/qvmovie.pc
has "$dev" Depends "libqvmovie0 \\(= $version\\)"
if grep -q 'libqvmovie\.so\.0' "$work/list"; then fail "libqvmovie-dev holds the library"; fi
debs="$lib $dev"

if ls "$work"/packages/qvmovie-tools_*.deb >/dev/null 2>&1; then
  tools=$(package qvmovie-tools) || exit 1
  debs="$debs $tools"
  echo "qvmovie-tools $version: Depends: $(dpkg-deb -f "$tools" Depends)"
  has "$tools" Depends "libqvmovie0 \\(= $version\\)"
  has "$tools" Depends 'libpng16'
  holds "$tools" usr/bin/qvmovie-render usr/share/man/man1/qvmovie-render.1 \
    usr/bin/qvmovie-import usr/share/man/man1/qvmovie-import.1 \
    usr/share/qvmovie/examples/demo.json usr/share/qvmovie/examples/falls.json \
    usr/share/doc/qvmovie/SCENE.md
  for deb in $debs; do dpkg -x "$deb" "$work/root" || fail "dpkg -x $deb"; done
  bin=$work/root/usr/bin
  examples=$work/root/usr/share/qvmovie/examples
  cd "$work/elsewhere" || exit 1
  for scene in "$examples"/*.json; do
    name=$(basename "$scene" .json)
    env -u LD_LIBRARY_PATH "$bin/qvmovie-render" "$scene" -q -o "$name.gif" --png-at 0 "$name.png" ||
      fail "qvmovie-render $scene"
    [ -s "$name.gif" ] && [ -s "$name.png" ] || fail "qvmovie-render wrote no $name.gif"
    echo "rendered $name.json from the unpacked package"
  done
  # The engine for the browser, when it was built: the unpacked tool finds it
  # in its own prefix (a mark added to the unpacked page shows that it was
  # that page, not the build's) and writes one page of at most 400 KB.
  web=$work/root/usr/share/qvmovie/web
  if [ -f "$web/qvmovie-engine.wasm" ]; then
    holds "$tools" usr/share/qvmovie/web/qvmovie-engine.js usr/share/qvmovie/web/page.html
    echo "<!-- unpacked -->" >>"$web/page.html"
    env -u LD_LIBRARY_PATH -u QVMOVIE_WEB_DIR "$bin/qvmovie-render" "$examples/demo.json" \
      --html demo.html || fail "qvmovie-render --html"
    size=$(wc -c <demo.html)
    grep -q "<!-- unpacked -->" demo.html || fail "--html did not use the unpacked engine"
    [ "$size" -le 409600 ] || fail "the demo's page is $size bytes, over 400 KB"
    echo "exported demo.html ($size bytes) from the unpacked package"
  fi
  if [ -x "$bin/qvmovie-play" ]; then
    has "$tools" Depends 'libsdl2'
    out=$(env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER -u LD_LIBRARY_PATH \
      timeout 20 "$bin/qvmovie-play" "$examples/demo.json" 2>&1 </dev/null)
    rc=$?
    [ $rc -eq 1 ] || fail "qvmovie-play without a display: exit status $rc, expected 1: $out"
    env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER -u LD_LIBRARY_PATH timeout 60 \
      "$bin/qvmovie-play" "$examples/falls.json" --frames 2 --screenshot shot.png >/dev/null 2>&1 ||
      fail "qvmovie-play --frames 2 --screenshot without a display"
    [ -s shot.png ] || fail "qvmovie-play wrote no screenshot"
    echo "qvmovie-play from the unpacked package: refuses to run unseen, draws headless"
  fi
fi

# The dependencies resolve for apt (simulated: nothing is installed).
if command -v apt-get >/dev/null 2>&1; then
  # shellcheck disable=SC2086
  if ! apt-get install -s -q $debs >"$work/apt.log" 2>&1; then
    cat "$work/apt.log"
    fail "apt-get install -s"
  fi
  echo "apt-get install -s: dependencies resolve"
fi
echo "packages: $(cd "$work/packages" && ls ./*.deb | tr '\n' ' ')"
