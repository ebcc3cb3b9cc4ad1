#!/usr/bin/env bash
# Configures and builds the project in build/ (or $TARVO_BUILD_DIR). Extra arguments go to cmake's
# configure step, e.g. -DTARVO_SANITIZE=ON.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${TARVO_BUILD_DIR:-$root/build}
cmake -S "$root" -B "$build" -G Ninja "$@" >/dev/null
cmake --build "$build"
