#!/usr/bin/env bash
# run.sh BUILD-DIR COMPILER: installs the build, moves the tree, and builds an outside program against it,
# once through CMake and once through pkg-config.
set -euo pipefail
build=$1 compiler=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/prefix"
if [ -e "$work/prefix/include/surveymsg/core/detail" ]; then
    echo "internal headers are installed"
    exit 1
fi

cmake -S "$here" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/outside"
echo "built and run through find_package"

pc=$(dirname "$(find "$work/prefix" -name surveymsg.pc)")
libraries=$(dirname "$pc")
# shellcheck disable=SC2046 # the flags are several words
"$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Werror "$here/outside.cpp" -o "$work/outside" \
    $(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs surveymsg)
LD_LIBRARY_PATH=$libraries "$work/outside"
echo "built and run through pkg-config"
