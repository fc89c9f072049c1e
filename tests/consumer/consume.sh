#!/usr/bin/env bash
# Installs the built project into a temporary prefix, then builds and runs the
# consumer program against it twice: through the CMake package and through
# pkg-config. Usage: consume.sh <build dir> <C++ compiler> <compile flags>
# (the flags the library was built with, e.g. its sanitizers).
set -euo pipefail
build=$1 cxx=$2 flags=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" \
   -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer"

export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
# shellcheck disable=SC2046,SC2086 # the flags are words
"$cxx" -std=c++20 $flags $(pkg-config --cflags QorBgpCommunity) "$here/Consumer.cpp" \
   -o "$work/consumer-pc" $(pkg-config --libs QorBgpCommunity) \
   -Wl,-rpath,"$work/prefix/lib"
"$work/consumer-pc"
# Every installed header compiles on its own, and none of them picks up a
# user's header of the same name as one of ours that is earlier on the path.
mkdir -p "$work/shadow/platform" "$work/shadow/QorBgp"
echo '#error a user header shadowed the library'"'"'s' >"$work/shadow/platform/Types.h"
cp "$work/shadow/platform/Types.h" "$work/shadow/QorBgp/QorBgpCommunity.h"
(cd "$work/prefix/include" && find QorBgpCommunity -name '*.h' | sort) |
   sed 's/.*/#include <&>/' >"$work/every-header.cpp"
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++20 -fsyntax-only -I"$work/shadow" $(pkg-config --cflags QorBgpCommunity) \
   "$work/every-header.cpp"
# The installed tool finds the library next to it; its manual page is there.
if [ -e "$work/prefix/bin/qorbgp-comm" ]; then
   "$work/prefix/bin/qorbgp-comm" --version >/dev/null
   test -f "$work/prefix/share/man/man1/qorbgp-comm.1"
fi
echo "installed package: consumed through CMake and pkg-config; every header stands alone"
