#!/usr/bin/env bash
# usage: InstallTest.sh CMAKE BUILD_FOLDER CC CXX SAMPLE.bmp [SANITIZERS]
# `cmake --install` into a prefix of its own, which is then moved. From there alone the examples are built, with the CMake
# package and with pkg-config, and find the fingers of the sample.
set -euo pipefail
cmake=$1
build=$2
cc=$3
cxx=$4
sample=$(realpath -- "$5")
sanitizers=${6:-}
if [ -n "$sanitizers" ]; then
    echo "skipped: the installation is tested without sanitizers"
    exit 0
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail()
{
    echo "$*"
    exit 1
}

"$cmake" --install "$build" --prefix "$folder/first" >"$folder/log" || fail "$(cat "$folder/log")"
prefix=$folder/second
mv "$folder/first" "$prefix"
lib=$(dirname "$(find "$prefix" -name 'libVelmarinKormelinSegmentation.so')")
[ -e "$lib/libVelmarinKormelinSegmentation.so.1" ] || fail "no name with the interface's number"
grep -rlF "$build" "$prefix/include" "$lib/cmake" "$lib/pkgconfig" && fail "a file of the package names the build folder"
examples=$(dirname "$(find "$prefix" -name segment.c)")

# same_fingers WHAT PROGRAM ARGUMENT...: two lines of fingers, whatever stands behind the arrow.
same_fingers()
{
    local what=$1
    shift
    (cd "$folder" && "$@") >"$folder/out" || fail "$what: $(cat "$folder/out")"
    [ "$(grep -cE 'x [0-9]+ y [0-9]+ width [0-9]+ height [0-9]+' "$folder/out")" -eq 2 ] ||
        fail "$what finds other than two fingers: $(cat "$folder/out")"
    echo "$what: two fingers"
}

"$cmake" -G Ninja -S "$examples/consumer" -B "$folder/consumer" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" \
    -DCMAKE_CXX_COMPILER="$cxx" >"$folder/log" 2>&1 || fail "$(cat "$folder/log")"
"$cmake" --build "$folder/consumer" >"$folder/log" 2>&1 || fail "$(cat "$folder/log")"
same_fingers "CMake, C" "$folder/consumer/segment" -o "$folder" "$sample"
same_fingers "CMake, C++" "$folder/consumer/fingers" "$sample" "$folder/finger"
same_fingers "CMake, core" "$folder/consumer/four_fingers" "$sample"

export PKG_CONFIG_PATH=$lib/pkgconfig
command -v pkg-config >/dev/null || fail "pkg-config is missing"
[ "$(pkg-config --modversion velmarin-kormelin-segmentation)" = "$(basename "$lib"/*.so.1.*.* | sed 's/.*\.so\.//')" ] ||
    fail "pkg-config tells another version than the library's name"
read -r -a flags <<<"$(pkg-config --cflags --libs velmarin-kormelin-segmentation)"
"$cc" -std=c99 -o "$folder/segment" "$examples/segment.c" "${flags[@]}"
"$cxx" -std=c++17 -o "$folder/fingers" "$examples/fingers.cpp" "${flags[@]}"
export LD_LIBRARY_PATH=$lib
same_fingers "pkg-config, C" "$folder/segment" -o "$folder" "$sample"
same_fingers "pkg-config, C++" "$folder/fingers" "$sample" "$folder/finger"

if [ -x "$build/tools/segment/kormelin-segment" ]; then
    "$prefix/bin/kormelin-segment" --format csv "$sample" >"$folder/out" || fail "the installed program: $(cat "$folder/out")"
    [ "$(grep -c two-fingers "$folder/out")" -ge 1 ] || fail "the installed program says: $(cat "$folder/out")"
    bash -n "$prefix/share/bash-completion/completions/kormelin-segment"
    echo "program: segments the sample"
fi
