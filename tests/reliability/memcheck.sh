#!/usr/bin/env bash
# Runs each unit-test program once under valgrind's memcheck and fails when
# valgrind reports an error or a definite or indirect leak. Test failures
# themselves are reported by the programs' own tests.
#   memcheck.sh VALGRIND PROGRAM...
set -u
valgrind=$1
shift
status=0
log=$(mktemp)
trap 'rm -f "$log"' EXIT
for program in "$@"; do
  name=$(basename "$program")
  start=$SECONDS
  "$valgrind" --tool=memcheck --error-exitcode=99 --leak-check=full \
    --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect \
    --quiet "$program" --gtest_brief=1 > "$log" 2>&1
  code=$?
  case $code in
    0) echo "memcheck: $name clean ($((SECONDS - start))s)" ;;
    1) echo "memcheck: $name clean, with failing tests ($((SECONDS - start))s)" ;;
    *)
      echo "memcheck: $name FAILED (exit $code)"
      cat "$log"
      status=1
      ;;
  esac
done
exit $status
