#!/usr/bin/env bash
# usage: Hardening.sh CC READELF OBJDUMP NM CMAKE BUILD_FOLDER CONFIGURATION LIBRARY [PROGRAM]
# What cmake/Hardening.cmake asks for is in the files that are delivered, as built and as installed. Before that every
# check is shown to find its fault, in a library of a few lines that has this fault and no other.
set -euo pipefail
cc=$1
readelf=$2
objdump=$3
nm=$4
cmake=$5
build=$6
configuration=$7
library=$8
program=${9:-}
export LC_ALL=C
# Behind a pipe grep reads to the end, without -q: who writes into a closed pipe fails, and so would the whole of it.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# The libraries of the platform, and those of the program for its formats of pictures.
platform='libstdc\+\+\.so\.6|libm\.so\.6|libgcc_s\.so\.1|libc\.so\.6|ld-linux[a-z0-9_-]*\.so\.[12]'
formats='libpng16\.so\.16|libjpeg\.so\.62|libtiff\.so\.6|libopenjp2\.so\.7'

fortified=0
case $configuration in Release | RelWithDebInfo | MinSizeRel) fortified=1 ;; esac
x86=0
[[ $("$readelf" -h "$library") == *X86-64* ]] && x86=1

# dynamic TAG FILE: the values of the tag in the table of the dynamic linker.
dynamic()
{
    "$readelf" -Wd "$2" | sed -nE "s/^ *0x[0-9a-f]+ \\($1\\) *//p"
}

# segments FILE: name and flags of each segment, one a line: LOADRE, GNU_STACKRW, ...
segments()
{
    "$readelf" -Wl "$1" | sed -nE 's/^ +([A-Z_]+) +(0x[0-9a-f]+ +){5}([RWE ]{3}) .*/\1 \3/p' | tr -d ' '
}

imports()
{
    "$nm" -D --undefined-only --format=posix "$1" | awk '{sub(/@.*/, "", $1); print $1}'
}

exported_functions()
{
    "$nm" -D --defined-only --format=posix "$1" | awk '$2 == "T" {print $1, $3}'
}

# The first instruction of an exported function: an indirect call may land there.
landing_pads()
{
    local name address
    while read -r name address; do
        "$objdump" -d --no-show-raw-insn --start-address="0x$address" --stop-address=$((0x$address + 4)) "$1" |
            grep -E ':[[:space:]]*endbr64' >/dev/null || echo "$name"
    done < <(exported_functions "$1")
}

# One step of the stack pointer over a whole page could pass over the guard below the stack.
long_steps()
{
    local step
    while read -r step; do
        [ $((step)) -le 4096 ] || echo "$step"
    done < <("$objdump" -d --no-show-raw-insn "$1" | sed -nE 's/.*[[:space:]]sub +\$(0x[0-9a-f]+),%rsp.*/\1/p' | sort -u)
}

# faults KIND FILE: one word for each thing that is wrong, in fixed order. KIND is the name that the file must tell of
# itself, or "program".
faults()
{
    local kind=$1 file=$2 of_segments of_imports libraries=$platform plain='snprintf|v?s?printf|v?fprintf'
    of_segments=$(segments "$file")
    of_imports=$(imports "$file")
    grep -qx 'GNU_RELROR' <<<"$of_segments" || echo relro
    "$readelf" -Wd "$file" | grep -E '\(BIND_NOW\)|\(FLAGS\).*BIND_NOW|\(FLAGS_1\).* NOW' >/dev/null || echo now
    grep -qx 'GNU_STACKRW' <<<"$of_segments" || echo stack
    ! grep -qE 'W.*E' <<<"$(grep '^LOAD' <<<"$of_segments" | sed 's/^LOAD//')" || echo writable-code
    [ -z "$(dynamic RPATH "$file")$(dynamic RUNPATH "$file")" ] || echo runpath
    [[ -z $(dynamic TEXTREL "$file") && $(dynamic FLAGS "$file") != *TEXTREL* ]] || echo textrel
    grep -qx __stack_chk_fail <<<"$of_imports" || echo canary
    if [ "$fortified" -eq 1 ]; then
        grep -v '^__stack' <<<"$of_imports" | grep -E '^__[a-z]+_chk$' >/dev/null || echo checked-forms
        [ "$kind" = program ] || plain+='|vsnprintf' # std::to_string takes its address
        ! grep -qxE "$plain" <<<"$of_imports" || echo plain-forms
    fi
    if [ "$kind" = program ]; then
        libraries+="|$formats"
        [[ $(dynamic FLAGS_1 "$file") == *PIE* ]] || echo pie
    else
        [ "$(dynamic SONAME "$file")" = "Library soname: [$kind]" ] || echo soname
        [ -n "$(exported_functions "$file")" ] || echo exports
    fi
    [ -z "$(dynamic NEEDED "$file" | sed -E 's/.*\[(.*)\]/\1/' | grep -vxE "$libraries")" ] || echo needed
    if [ "$x86" -eq 1 ]; then
        [ -z "$(landing_pads "$file")" ] || echo landing-pads
        [ -z "$(long_steps "$file")" ] || echo long-steps
    fi
}

# --- each check finds its fault

cat >"$folder/tiny.c" <<'CODE'
#include <stdio.h>
int Tiny(const char* szText)
{
    char szLong[20000];
    return snprintf(szLong, sizeof szLong, "%s %s", szText, szText) + szLong[szText[0] & 127];
}
CODE
printf 'int main(void)\n{\n    return Tiny("text") < 0;\n}\n' | cat "$folder/tiny.c" - >"$folder/tiny-main.c"
printf '%s\n' 'void Other(void) {}' >"$folder/other.c"
# An address of another library within code, and a section that can be written and run.
printf '%s\n' '__asm__(".text\n.quad puts\n");' | cat "$folder/tiny.c" - >"$folder/tiny-textrel.c"
printf '%s\n' '__asm__(".section .both,\"awx\"\n.quad 0\n.text\n");' | cat "$folder/tiny.c" - >"$folder/tiny-both.c"
"$cc" -shared -fPIC -Wl,-soname,libother.so -o "$folder/libother.so" "$folder/other.c"

base=(-O2 -fPIC -fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
[ "$x86" -eq 0 ] || base+=(-fcf-protection=full)
tried=0

# expect_faults EXPECTED KIND SOURCE [FLAG...]: the words, separated by blanks.
expect_faults()
{
    local expected=$1 kind=$2 source=$3 shape=(-shared -Wl,-soname,libtiny.so) found
    shift 3
    [ "$kind" = library ] || shape=(-pie)
    "$cc" "${base[@]}" "${shape[@]}" -o "$folder/tiny" "$folder/$source" "$@" 2>"$folder/log" ||
        { cat "$folder/log" && exit 1; }
    found=$(faults "${kind/library/libtiny.so}" "$folder/tiny" | tr '\n' ' ')
    if [ "${found% }" != "$expected" ]; then
        echo "Built with '$*', $source has the faults '$expected'; found: '${found% }'"
        exit 1
    fi
    tried=$((tried + 1))
}

expect_faults '' library tiny.c
expect_faults '' program tiny-main.c
expect_faults relro library tiny.c -Wl,-z,norelro
expect_faults now library tiny.c -Wl,-z,lazy
expect_faults stack library tiny.c -Wl,-z,execstack
expect_faults writable-code library tiny-both.c
expect_faults runpath library tiny.c -Wl,-rpath,/nowhere
expect_faults runpath library tiny.c -Wl,--disable-new-dtags,-rpath,/nowhere
expect_faults textrel library tiny-textrel.c -Wl,-z,notext
expect_faults canary library tiny.c -fno-stack-protector
[ "$fortified" -eq 0 ] || expect_faults 'checked-forms plain-forms' library tiny.c -U_FORTIFY_SOURCE
expect_faults pie program tiny-main.c -no-pie
expect_faults soname library tiny.c -Wl,-soname,libtiny.so.1
expect_faults exports library tiny.c -fvisibility=hidden
expect_faults needed library tiny.c -Wl,--no-as-needed "$folder/libother.so"
if [ "$x86" -eq 1 ]; then
    expect_faults landing-pads library tiny.c -fcf-protection=none
    expect_faults long-steps library tiny.c -fno-stack-clash-protection
fi
echo "the checks judge $tried small files rightly"

# --- what is delivered

failed=0
# check KIND FILE
check()
{
    local found
    found=$(faults "$1" "$2" | tr '\n' ' ')
    if [ -n "$found" ]; then
        echo "$2: $found"
        failed=1
    else
        echo "hardened: ${2##*/}"
    fi
}

name=libVelmarinKormelinSegmentation.so.1
"$cmake" --install "$build" --prefix "$folder/installed" --component runtime >"$folder/log" || { cat "$folder/log" && exit 1; }
check "$name" "$library"
check "$name" "$(find "$folder/installed" -name "$name")"
if [ -n "$program" ]; then
    "$cmake" --install "$build" --prefix "$folder/installed" --component tools >"$folder/log" || { cat "$folder/log" && exit 1; }
    check program "$program"
    check program "$folder/installed/bin/${program##*/}"
fi
exit $failed
