#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz/, clang with AddressSanitizer) into
# build-fuzz/ and runs them on their checked-in seed corpora.
#   scripts/fuzz.sh TARGET SECONDS   one target for that long
#   scripts/fuzz.sh --all SECONDS    every target in turn (CI: about 30 each)
#   scripts/fuzz.sh --list           the targets
#   scripts/fuzz.sh --seeds          rewrite the seeds the library's writers make
# New inputs go to build-fuzz/corpus/TARGET, never into the checked-in seeds;
# a crash leaves its input in build-fuzz/findings/ and fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

targets=(fuzz_string_parsers fuzz_image_record fuzz_unpacked_image fuzz_image_file
  fuzz_compressed_texture fuzz_framebuffer_stream fuzz_noise_texture)
build=build-fuzz

build_targets() {
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}"
  local launcher=()
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  CC=clang CXX=clang++ cmake -S fuzz -B "$build" -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" >/dev/null
  cmake --build "$build" -j"$(nproc)" --target "$@"
}

run_target() {
  local target=$1 seconds=$2
  local work="$build/corpus/$target" findings="$build/findings"
  mkdir -p "$work" "$findings"
  echo "fuzz: $target for ${seconds}s"
  # Mesa keeps its driver's allocations to the end of the process: leaks are
  # not what these runs look for (the sanitizer build of the tests does).
  ASAN_OPTIONS="detect_leaks=0:allocator_may_return_null=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}" \
    "$build/$target" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 \
    -malloc_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$findings/$target-" \
    "$work" "fuzz/corpus/$target"
}

case "${1:-}" in
  --list)
    printf '%s\n' "${targets[@]}"
    ;;
  --seeds)
    build_targets make_seeds
    "$build/make_seeds" fuzz/corpus
    ;;
  --all)
    seconds=${2:-30}
    build_targets "${targets[@]}"
    failed=0
    for target in "${targets[@]}"; do
      run_target "$target" "$seconds" || failed=1
    done
    if [ "$failed" -ne 0 ]; then
      echo "fuzz: findings in $build/findings" >&2
      exit 1
    fi
    echo "fuzz: ${#targets[@]} targets ran ${seconds}s each without a finding"
    ;;
  fuzz_*)
    [ $# -eq 2 ] || { echo "usage: $0 TARGET SECONDS" >&2; exit 2; }
    build_targets "$1"
    run_target "$1" "$2"
    ;;
  *)
    echo "usage: $0 TARGET SECONDS | --all SECONDS | --list | --seeds" >&2
    exit 2
    ;;
esac
