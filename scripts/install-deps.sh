#!/usr/bin/env bash
# Installs the Debian packages Pixmora builds, tests and runs with.
# Idempotent: packages already present are skipped, and apt is not touched
# at all when nothing is missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config file
  libegl-dev libgles-dev libegl-mesa0 libgl1-mesa-dri
  libglm-dev libstb-dev libcli11-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev libtsan2
  mate-backgrounds
  libopencv-dev opencv-data opencv-doc
  doxygen
  clang libclang-rt-14-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all packages present"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
