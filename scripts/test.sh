#!/usr/bin/env bash
# Sets the machine up, builds, and runs every test (unit and end-to-end) through ctest.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${TARVO_BUILD_DIR:-$root/build}
"$root/scripts/install-deps.sh"
TARVO_BUILD_DIR=$build "$root/scripts/build.sh" "$@"
cd "$build"
# Used by sanitizer builds only: leaks inside third-party libraries that we cannot fix.
export LSAN_OPTIONS="suppressions=$root/tests/lsan.supp:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
ctest --output-on-failure -j2 --timeout 600
