#!/usr/bin/env bash
# Installs the build into a scratch prefix and uses it from outside the source
# tree, as an application developer would: every installed header compiles
# alone, grey_example builds as plain C99 through pkg-config, and
# private_context_example builds as C++ through find_package(Pixmora) in a
# separate CMake project. Both programs run and check their own result.
# Usage: scripts/check-install.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
src=$PWD
build=${1:-build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
echo "check-install: installed into a scratch prefix"

libdir=$prefix/lib
test -f "$libdir/libpixmora.so.1.0.12"
test "$(readlink "$libdir/libpixmora.so.1")" = libpixmora.so.1.0.12
test "$(readlink "$libdir/libpixmora.so")" = libpixmora.so.1
objdump -p "$libdir/libpixmora.so.1.0.12" | grep -q 'SONAME *libpixmora.so.1$'
objdump -p "$libdir/libpixmora.so.1.0.12" | grep -q 'RUNPATH *\$ORIGIN/pixmora$'
for stand_in in dlog tbm apputil; do
  test -f "$libdir/pixmora/lib$stand_in.so.0"
  test ! -e "$libdir/lib$stand_in.so.0"
done
test -x "$prefix/bin/pixmora"
"$prefix/bin/pixmora" --help >/dev/null
echo "check-install: library, links, private platform stand-ins and tool in place"

export PKG_CONFIG_PATH=$libdir/pkgconfig
test "$(pkg-config --modversion pixmora)" = 1.0.12
cflags=$(pkg-config --cflags pixmora)
libs=$(pkg-config --libs pixmora)

# Every public header compiles on its own in a consumer, with nothing from
# this tree on the include path.
for header in "$prefix"/include/pixmora/*.h; do
  name=$(basename "$header")
  printf '#include <pixmora/%s>\n' "$name" >"$work/alone.cpp"
  c++ -std=c++17 -Wall -Wextra -fsyntax-only $cflags "$work/alone.cpp"
done
printf '#include <pixmora/pixmora.h>\nint main(void) { return 0; }\n' >"$work/alone.c"
cc -std=c99 -pedantic -Wall -Wextra -Werror -fsyntax-only $cflags "$work/alone.c"
echo "check-install: each of $(ls "$prefix"/include/pixmora/*.h | wc -l) installed headers compiles alone"

cc -std=c99 -pedantic -Wall -Wextra "$src/examples/grey_example.c" -o "$work/grey_example" \
  $cflags $libs -Wl,-rpath,"$libdir"
"$work/grey_example" "$work/grey.pgm"
echo "check-install: grey_example built as C99 through pkg-config and passed"

cmake -S "$src/examples/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/consumer" >/dev/null
"$work/consumer/private_context_example"
echo "check-install: private_context_example built as C++ through find_package and passed"
