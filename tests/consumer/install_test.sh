#!/usr/bin/env bash
# Builds and runs a program with an installed copy in a folder that it was moved to: by CMake and by
# pkg-config, with static and with shared libraries; and with the sources as part of a project, with
# the tool and without.
set -euo pipefail

[[ $# -eq 4 ]] || { echo "Usage: install_test.sh SOURCES BUILD PROGRAM.CPP PHOTO" >&2; exit 2; }
sources=$1 build=$2 program=$3 photo=$4
here=$sources/tests/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# try NAME COMMAND...: the command runs the program, which writes four pictures.
try() {
    local name=$1
    shift
    mkdir "$work/$name-pictures"
    "$@" "$photo" "$work/$name-pictures" >"$work/log"
    [[ $(find "$work/$name-pictures" -name '*.jpg' -size +0 | wc -l) -eq 4 ]]
    echo "$name: ok"
}

# consume NAME OPTION...: the program as a CMake project.
consume() {
    local name=$1
    shift
    cmake -G Ninja -S "$here" -B "$work/$name" -DCONSUMER_SOURCE="$program" \
        -DCMAKE_BUILD_TYPE=Debug "$@" >"$work/log"
    cmake --build "$work/$name" >>"$work/log" || { cat "$work/log"; return 1; }
    try "$name" "$work/$name/consumer"
}

# The headers that are installed say all they need, each by itself.
cmake --install "$build" --prefix "$work/there" >"$work/log"
mv "$work/there" "$work/moved"
prefix=$work/moved
"$prefix/bin/tessel-tree" --version >"$work/log"
for name in tessel tessel-tree; do
    [[ $(find "$prefix/share" -name "$name.1" -o -name "$name" -path '*completions*' | wc -l) -eq 2 ]]
done
find "$prefix/include/tessel" -name '*.h' | while read -r header; do
    c++ -std=c++20 -fsyntax-only -I "$prefix/include/tessel" -include "$header" -x c++ /dev/null
done

consume static -DCMAKE_PREFIX_PATH="$prefix"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name tessel.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046  # several words
c++ -std=c++20 "$program" -o "$work/by-pkg-config" $(pkg-config --cflags --libs tessel)
try pkg-config "$work/by-pkg-config"

for tool in ON OFF; do
    consume "fetched-$tool" -DTESSEL_SOURCE="$sources" -DTESSEL_TOOL=$tool
done
[[ -e $work/fetched-ON/_deps/tessel-build/tessel ]]
[[ ! -e $work/fetched-OFF/_deps/tessel-build/tessel ]]

cmake -G Ninja -S "$sources" -B "$work/build" -DBUILD_SHARED_LIBS=ON -DCMAKE_BUILD_TYPE=Debug \
    -DTESSEL_TESTS=OFF -DTESSEL_EXAMPLES=OFF >"$work/log"
cmake --build "$work/build" >>"$work/log" || { cat "$work/log"; exit 1; }
cmake --install "$work/build" --prefix "$work/there" >>"$work/log"
mv "$work/there" "$work/moved-shared"
rm -rf "$work/build"
consume shared -DCMAKE_PREFIX_PATH="$work/moved-shared"
"$work/moved-shared/bin/tessel" | grep -q Version
