#!/usr/bin/env bash
# usage: docs.sh [--check]
# Makes docs/errors.md from the error catalogue, and the reference pages by Doxygen in build/doxygen/html; a warning of
# Doxygen's fails. With --check it makes nothing: it fails if docs/errors.md is not what the catalogue gives.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
cd "$repository"

error_table()
{
    cat <<'END'
# The error catalogue

Made by `scripts/docs.sh` from `src/RDTools/ErrorCatalogue.hpp`. Numbers of the catalogue are shared by a family of
biometric components, so most of them never occur here; the public header tells which function returns which.
`KSGetErrorDescriptionA` gives the text.

| Number | Name | Text |
|---:|---|---|
END
    sed -n 's/^ *X(\([A-Z0-9_]*\), \(-\{0,1\}[0-9]*\), "\(.*\)").*$/| \2 | `\1` | \3 |/p' src/RDTools/ErrorCatalogue.hpp
}

if [ "${1:-}" = --check ]; then
    diff docs/errors.md <(error_table) >&2 || { echo "docs/errors.md is not up to date: run scripts/docs.sh" >&2 && exit 1; }
    exit 0
fi
error_table >docs/errors.md
install_missing doxygen
mkdir -p build
doxygen docs/Doxyfile
echo "build/doxygen/html/index.html"
