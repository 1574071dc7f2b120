#!/usr/bin/env bash
# usage: package.sh
# Debian packages of the library, its development files, the program and the Python module, in build/packages, and what
# lintian says of them; fails on an error of lintian's.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

install_missing "${build_packages[@]}" "${tool_packages[@]}" "${package_packages[@]}"
rm -rf "$repository/build/packages"
configure package
build package
# Debian's folders are open to all, whatever the user's mask.
umask 022
(cd "$repository/build/package" && cpack -B "$repository/build/packages" >cpack.log) ||
    { cat "$repository/build/package/cpack.log" >&2 && exit 1; }
rm -rf "$repository/build/packages/_CPack_Packages"
ls "$repository"/build/packages/*.deb
lintian --allow-root --fail-on error "$repository"/build/packages/*.deb
