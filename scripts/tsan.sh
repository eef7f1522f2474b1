#!/usr/bin/env bash
# Builds the endurance test program with ThreadSanitizer in build-tsan/ and
# runs the thread tests under it. Races inside Mesa are suppressed by library
# name in tests/tsan.supp; any report elsewhere fails the run.
#   scripts/tsan.sh [extra gtest filter, default ThreadsTest.*]
set -euo pipefail
cd "$(dirname "$0")/.."
filter="${1:-ThreadsTest.*}"

export CMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-$(command -v ccache || true)}"
export CMAKE_C_COMPILER_LAUNCHER="${CMAKE_C_COMPILER_LAUNCHER:-$(command -v ccache || true)}"
sanitize="-fsanitize=thread -fno-omit-frame-pointer"
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DPIXMORA_BUILD_BENCH=OFF -DPIXMORA_BUILD_TOOLS=OFF \
  -DCMAKE_C_FLAGS="$sanitize" -DCMAKE_CXX_FLAGS="$sanitize" \
  -DCMAKE_EXE_LINKER_FLAGS=-fsanitize=thread -DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=thread \
  >/dev/null
cmake --build build-tsan -j"$(nproc)" --target pixmora_test_endurance

# halt_on_error makes the first report fail the run; second_deadlock_stack
# gives both stacks of a lock-order report.
export TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp halt_on_error=1 second_deadlock_stack=1 ${TSAN_OPTIONS:-}"
build-tsan/tests/pixmora_test_endurance --gtest_filter="$filter"
echo "tsan: no data race reported outside the suppressed driver libraries"
