#!/usr/bin/env bash
# Builds the Debian packages libpixmora1, libpixmora-dev and pixmora-tools
# into build-deb/, configured for /usr so the library lands in Debian's
# multiarch directory.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build-deb -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DPIXMORA_BUILD_TESTS=OFF -DPIXMORA_BUILD_BENCH=OFF
cmake --build build-deb -j"$(nproc)"
(cd build-deb && cpack -G DEB)
ls -1 build-deb/*.deb
