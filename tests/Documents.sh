#!/usr/bin/env bash
# usage: Documents.sh REPOSITORY
# Documents agree with the code: the table of errors is up to date, and links lead to files that are there.
set -euo pipefail
cd -- "$1"
scripts/docs.sh --check
broken=$(for document in *.md docs/*.md; do
    sed '/^ *```/,/^ *```/d' "$document" | { grep -oE '\]\([^)#:]+(#[^)]*)?\)' || true; } | sed -E 's/^\]\(([^)#]+).*\)$/\1/' | while read -r link; do
        [ -e "$(dirname "$document")/$link" ] || echo "$document: $link"
    done
done)
if [ -n "$broken" ]; then
    echo "links that lead nowhere:"
    echo "$broken"
    exit 1
fi
echo "documents agree with the code"
