#!/usr/bin/env bash
# usage: abi.sh [--check|--update]
# Compares the binary interface of the library with abi/VelmarinKormelinSegmentation.abi; --update writes that file, for
# a version of the library with another interface. Installs what it needs and is not there yet.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

case ${1:---check} in
    --check) mode= ;;
    --update) mode=--update ;;
    *)
        sed -n '2,4s/^# //p' "${BASH_SOURCE[0]}" >&2
        exit 2
        ;;
esac
install_missing "${build_packages[@]}" "${test_packages[@]}" "${abi_packages[@]}"
configure release -DKORMELIN_BUILD_TESTS=ON
build release kormelin_abi
"$repository/tests/Abi.sh" "$repository/build/release/tests/abi/libVelmarinKormelinSegmentation.so" "$repository" ${mode:+"$mode"}
