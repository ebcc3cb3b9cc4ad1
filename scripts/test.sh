#!/usr/bin/env bash
# Sets the machine up, builds, and runs every test (unit and end-to-end) through ctest.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${TARVO_BUILD_DIR:-$root/build}
"$root/scripts/install-deps.sh"
TARVO_BUILD_DIR=$build "$root/scripts/build.sh" "$@"
cd "$build"
ctest --output-on-failure -j2 --timeout 600
