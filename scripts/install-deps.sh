#!/usr/bin/env bash
# Installs the Debian packages the project builds and tests with. Safe to run again: it only
# calls apt-get when something on the list is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-websockets-dev
  liblz4-dev
  libgmsh-dev libtbb-dev libocct-data-exchange-dev libocct-modeling-algorithms-dev libocct-foundation-dev
  libexodusii-dev libnetcdf-dev
  libvtk9-dev libegl-dev libegl-mesa0 libgl1-mesa-dri
  libgtest-dev libgmock-dev
  python3 python3-websockets python3-pytest python3-netcdf4 python3-numpy python3-pil python3-lz4
)

# Extra packages for one task (scripts/fuzz.sh asks for clang) come as arguments.
packages+=("$@")

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
