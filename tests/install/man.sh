#!/bin/sh
# Renders each manual page with man -l and fails on any warning, or when a
# page lacks its name or a section a manual page has.
#
#   man.sh PAGE...
#
# Exit status 77 (skipped) when man is not installed.
set -u
if ! command -v man >/dev/null 2>&1; then
  echo "man is not installed: skipped"
  exit 77
fi
status=0
for page in "$@"; do
  name=$(basename "$page" .1)
  out=$(MANWIDTH=80 LC_ALL=C.UTF-8 man --warnings -l "$page" 2>&1 >/dev/null)
  if [ -n "$out" ]; then
    echo "$page: warnings:"
    echo "$out"
    status=1
  fi
  text=$(MANWIDTH=80 LC_ALL=C.UTF-8 man -l "$page" 2>/dev/null)
  for want in NAME SYNOPSIS DESCRIPTION OPTIONS "EXIT STATUS" "$name +- "; do
    if ! printf "%s\n" "$text" | grep -Eq -- "$want"; then
      echo "$page: no '$want' in the rendered page"
      status=1
    fi
  done
  [ $status -eq 0 ] && echo "$page: $(printf '%s\n' "$text" | wc -l) lines"
done
exit $status
