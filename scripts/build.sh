#!/usr/bin/env bash
# Configures and builds Pixmora into build/ (release with debug info).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
cmake --build build -j"$(nproc)"
