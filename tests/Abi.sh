#!/usr/bin/env bash
# usage: Abi.sh LIBRARY REPOSITORY [--update]
# What applications are compiled against has not changed since abi/VelmarinKormelinSegmentation.abi was written: names and
# types of the exported functions and pointers, and the layout of what they point to. LIBRARY exports what the product
# does and has debug information. --update writes the file. Needs abidw and abidiff, else exit status 77.
set -euo pipefail
library=$1
repository=$2
baseline=$repository/abi/VelmarinKormelinSegmentation.abi
if ! command -v abidw >/dev/null || ! command -v abidiff >/dev/null; then
    echo "skipped: abidw and abidiff (Debian's abigail-tools) are not installed"
    exit 77
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Only what public headers define, and the two classes behind the exported pointers; neither paths nor, as far as the
# format allows, what one compiler says in another way than the next.
mkdir "$folder/headers"
cp "$repository"/include/*.h "$repository/src/RDTools/ProcessorBase.hpp" "$folder/headers"
abidw --headers-dir "$folder/headers" \
    --exported-interfaces-only --drop-private-types --drop-undefined-syms --no-corpus-path --no-comp-dir-path \
    --no-show-locs --no-architecture --no-elf-needed --no-parameter-names --no-write-default-sizes \
    --type-id-style hash --out-file "$folder/raw" "$library"
# type_id NAME FILE: the file's id of that type. Ids depend on the order in which types are met.
type_id()
{
    sed -nE "s/.*<type-decl name='$1'.* id='([0-9a-f]+)'.*/\1/p" "$2"
}
int=$(type_id int "$folder/raw")
sed -E "s|path='[^']*/(src/[^']*)'|path='\1'|; s/([0-9])UL&gt;/\1\&gt;/g
    /destructor='yes'/s/ vtable-offset='[-0-9]+'//; s/ mangled-name='[^']*D4Ev'//
    /<parameter type-id='$int' is-artificial='yes'/d" "$folder/raw" >"$folder/found"
functions=$(grep -cE "<function-decl name='KS" "$folder/found" || true)
if [ "$functions" -ne 16 ]; then
    echo "$library tells of $functions functions instead of 16: has it debug information?"
    exit 1
fi
if [ "${3:-}" = --update ]; then
    cp "$folder/found" "$baseline"
    echo "written: $baseline"
    exit 0
fi

if ! abidiff "$baseline" "$folder/found" >"$folder/log" 2>&1; then
    cat "$folder/log"
    echo "The interface has changed. If that is wanted: scripts/abi.sh --update, and a new version of the library."
    exit 1
fi

# The comparison sees what it is here for: a type, a layout, a virtual function's place, a function that is gone.
must_differ()
{
    local what=$1
    shift
    sed -E "$@" "$baseline" >"$folder/other"
    cmp -s "$baseline" "$folder/other" && echo "$what: nothing to change was found" && exit 1
    ! abidiff "$baseline" "$folder/other" >"$folder/log" 2>&1 || { echo "not noticed: $what" && exit 1; }
}
int=$(type_id int "$baseline")
long=$(type_id 'long int' "$baseline")
must_differ "an int parameter that becomes long" "/name='KSGetSegment' mangled/,/<\/function-decl>/s/$int/$long/"
must_differ "a long result that becomes int" "/name='KSInitialize' mangled/,/<\/function-decl>/s/$long/$int/"
must_differ "a larger structure" "/name='tagBITMAPINFOHEADER'/s/size-in-bits='320'/size-in-bits='352'/"
must_differ "a member that moves" \
    "/layout-offset-in-bits='96'/,/<\/data-member>/s/layout-offset-in-bits='96'/layout-offset-in-bits='104'/"
must_differ "virtual functions that change places" "s/vtable-offset='0'/vtable-offset='7'/"
must_differ "a function that is gone" \
    "/<elf-symbol name='KSGetBitmap'/d; /name='KSGetBitmap' mangled/,/<\/function-decl>/d"
echo "$functions functions and two pointers, as in $(basename "$baseline")"
