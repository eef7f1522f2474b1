#!/usr/bin/env bash
# Builds the API reference into build/docs/html. Fails when a function or
# record of the C interface lacks its reference comment.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
cmake --build build --target docs
