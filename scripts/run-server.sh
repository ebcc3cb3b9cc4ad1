#!/usr/bin/env bash
# Sets the machine up, builds, and starts the server. Arguments go to tarvo_server
# (e.g. --port 8000 --debug-json). The server prints "Listening on port N".
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" >&2
exec "${TARVO_BUILD_DIR:-$root/build}/server/tarvo_server" "$@"
