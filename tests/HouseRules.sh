#!/usr/bin/env bash
# usage: HouseRules.sh [REPOSITORY]
# Rules that no compiler checks: the direction of includes, a test file for each module, the length of files, words and
# paths that have no place in the project, and shell scripts that parse. Prints every breach, then fails.
set -uo pipefail
top=${1:-$(dirname -- "$0")/..}
cd -- "$top" || exit 2
failed=0

# report TITLE TEXT: a breach, if TEXT is not empty.
report()
{
    if [ -n "$2" ]; then
        printf '%s\n%s\n\n' "$1:" "$2"
        failed=1
    fi
}

# Files of the project, one a line: what is committed or would be; without git everything outside the build folder. What
# a fuzzer has made up obeys no rules.
files()
{
    if [ -e .git ] && git ls-files >/dev/null 2>&1; then
        git ls-files --cached --others --exclude-standard | grep -v '^fuzz/corpus/' | while read -r file; do [ -f "$file" ] && echo "$file"; done
    else
        find . \( -path ./.git -o -path ./build \) -prune -o -type f -print | sed 's|^\./||' | grep -v '^fuzz/corpus/'
    fi
}

# --- include direction: RDTools <- RDImageProcessing <- RDAfisTools <- src
# includes_outside FOLDER ALLOWED...: includes in quotation marks that leave the allowed folders.
includes_outside()
{
    local folder=$1 allowed
    shift
    allowed=$(printf '%s|' "$@")
    [ -d "src/$folder" ] || return 0
    grep -rnE --include='*.cpp' --include='*.hpp' --include='*.h' '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "src/$folder" |
        grep -vE "include[[:space:]]*\"(${allowed%|})/[A-Za-z0-9_]+\.hpp\""
}
report "RDTools includes from RDTools only" "$(includes_outside RDTools RDTools)"
report "RDImageProcessing includes from RDTools and itself only" \
    "$(includes_outside RDImageProcessing RDTools RDImageProcessing)"
report "RDAfisTools includes from the lower folders and itself only" \
    "$(includes_outside RDAfisTools RDTools RDImageProcessing RDAfisTools)"
own_in_brackets=$(grep -rnE '#[[:space:]]*include[[:space:]]*<(RDTools|RDImageProcessing|RDAfisTools|KS|Kormelin|Velmarin)' src)
report "Headers of the project are included in quotation marks" "$own_in_brackets"
unguarded=$(find src tests tools bench -name '*.hpp' 2>/dev/null | xargs -r grep -L '^#pragma once$')
report "Headers without #pragma once" "$unguarded"

# --- a test file for each module; sources that belong to another module's test are named here, with their reason
declare -A tested_by=()
missing=$(find src -name '*.cpp' | sort | while read -r source; do
    name=${source#src/}
    name=${name%.cpp}
    test=${tested_by[$name]:-$name}
    [ -f "tests/${test}Test.cpp" ] || echo "$source: no tests/${test}Test.cpp"
done)
report "Modules without a test file" "$missing"

# --- what tests hand to the library cannot be written and ends where nothing can be read
plain=$(grep -rnE --include='*.cpp' --include='*.hpp' --include='*.c' '\bKSSegmentBitmap\(|\bClSlapRunner\b' tests |
    grep -vE '^tests/(ReadOnlySegment|GuardedSlapRunner|SegmentationModes)\.hpp:|KSSegmentBitmap\(([A-Za-z_.]+, nullptr,|%p)|Header\(OneObject\(\)\), 0\)')
report "Tests that segment a bitmap without tests/ReadOnlySegment.hpp or tests/GuardedSlapRunner.hpp" "$plain"

# --- length of files
long=$(files | grep -E '^(src|tests|tools|examples|bench|include|fuzz)/.*\.(cpp|hpp|c|h)$' | while read -r file; do
    limit=600
    lines=$(wc -l <"$file")
    [ "$lines" -le "$limit" ] || echo "$file: $lines lines, the limit is $limit"
done)
report "Files too long" "$long"

# --- words; one letter of each stands in brackets, so that this file does not match itself
text_search()
{
    files | tr '\n' '\0' | xargs -0 -r grep -nIHE "$@"
}
outside_document='\b[P]arts? [1-7]\.[0-9]|\b[s]pecification\b|[s]pec\.md|\b[s]pec says\b|[l]eft to the implementer'
report "Mention of a document that is not part of the project" "$(text_search -i "$outside_document")"
report "The same in a commit message" \
    "$([ -e .git ] && git log --format='%h %s%n%b' 2>/dev/null | grep -iE "$outside_document")"
report "Unfinished work" "$(files | grep -vE '\.md$' | tr '\n' '\0' |
    xargs -0 -r grep -nIHiE '\b([T]ODO|[F]IXME|[X]XX|[H]ACK|[n]ot implemented yet|[p]laceholder|[s]tub)\b')"
report "Paths of one machine" "$(text_search '/([w]ork|[f]arm|[r]oot|[h]ome)/|["'\'' (=]/[t]mp\b')"

# --- shell scripts
scripts=$(files | while read -r file; do
    case $file in
        *.sh) ;;
        *) head -c 64 -- "$file" | head -n 1 | tr -d '\0' | grep -qE '^#!.*\b(ba|da)?sh\b' || continue ;;
    esac
    bash -n -- "$file" 2>&1
    [ -x "$file" ] || [[ $file == scripts/lib.sh ]] || echo "$file: not executable"
done)
report "Shell scripts" "$scripts"

[ "$failed" -eq 0 ] && echo "house rules hold"
exit "$failed"
