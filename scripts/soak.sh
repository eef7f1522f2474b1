#!/usr/bin/env bash
# Long soak: every photo effect and both blurs created, fed, drawn and deleted
# N times over (default 10000) on the library's private context, printing the
# live GL object and context counts and the resident memory at intervals.
# Builds only the endurance test program, in build/.
#   scripts/soak.sh [N]
set -euo pipefail
cd "$(dirname "$0")/.."
cycles="${1:-10000}"
report_every=$(( cycles / 20 ))
if [ "$report_every" -lt 1 ]; then report_every=1; fi

export CMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-$(command -v ccache || true)}"
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target pixmora_test_endurance >/dev/null

start=$(date +%s)
PIXMORA_SOAK_CYCLES="$cycles" PIXMORA_SOAK_REPORT_EVERY="$report_every" \
  build/tests/pixmora_test_endurance --gtest_filter='SoakTest.*'
echo "soak: $cycles cycles in $(( $(date +%s) - start )) s"
