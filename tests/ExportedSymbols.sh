#!/usr/bin/env bash
# usage: ExportedSymbols.sh NM LIBRARY
# The names in the dynamic symbol table that the library defines, weak ones included, are exactly these eighteen: the
# functions as code (T), the two pointers as data (B, null at load time).
set -euo pipefail
nm=$1
library=$2

expected=$(LC_ALL=C sort <<'LIST'
KSCreateSegmentHandle T
KSCreateSegmentationHandle T
KSDestroyHandle T
KSGetBitmap T
KSGetErrorDescriptionA T
KSGetPropertyA T
KSGetPropertyDoubleA T
KSGetPropertyLongA T
KSGetSegment T
KSGetVersionA T
KSInitialize T
KSSegmentBitmap T
KSSetPropertyA T
KSSetPropertyDoubleA T
KSSetPropertyLongA T
KSUninitialize T
g_pClassCallProfile B
g_pProfileTimer B
LIST
)
found=$("$nm" -D --defined-only --format=posix "$library" | awk '{print $1, $2}' | LC_ALL=C sort)

if [ "$found" != "$expected" ]; then
    echo "The exported symbols of $library differ from the list (< list, > library):"
    diff <(printf '%s\n' "$expected") <(printf '%s\n' "$found") || true
    exit 1
fi
echo "18 exported symbols, as listed"
