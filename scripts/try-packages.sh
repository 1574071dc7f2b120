#!/usr/bin/env bash
# usage: try-packages.sh [MIRROR]
# The packages of build/packages in a fresh Debian 12, made by debootstrap in a temporary folder: installs them, builds the
# C, C++ and CMake examples there against the packages alone and runs them on the sample, runs the Python module and the
# program, then removes the packages and compares the files with those before. Needs root, some 2 GB, and a mirror of
# Debian (by default http://deb.debian.org/debian). About five minutes.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
mirror=${1:-http://deb.debian.org/debian}

[ "$(id -u)" -eq 0 ] || { echo "debootstrap and chroot need root" >&2 && exit 1; }
packages=("$repository"/build/packages/*.deb)
[ -e "${packages[0]}" ] || { echo "no packages: run scripts/package.sh first" >&2 && exit 1; }
install_missing debootstrap

root=$(mktemp -d)
cleanup()
{
    umount -q "$root/proc" || true
    rm -rf --one-file-system "$root"
}
trap cleanup EXIT

say "A fresh Debian 12"
debootstrap --variant=minbase bookworm "$root" "$mirror" >"$root.log" 2>&1 || { tail -n 20 "$root.log" >&2 && exit 1; }
rm -f "$root.log"
mount -t proc proc "$root/proc"
inside()
{
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 HOME=/root "$@"
}
install_there()
{
    inside apt-get -q install -y -o Dpkg::Use-Pty=0 --no-install-recommends "$@" >"$root/apt.log" 2>&1 ||
        { tail -n 20 "$root/apt.log" >&2 && return 1; }
    rm "$root/apt.log"
}
# Everything but what apt and dpkg keep for themselves.
list_files()
{
    (cd "$root" && find . -xdev \( -path ./proc -o -path ./var/cache -o -path ./var/lib/apt -o -path ./var/lib/dpkg \
        -o -path ./var/log -o -path ./try -o -path ./tmp -o -path ./etc/ld.so.cache \) -prune \
        -o -printf '%p %y %s\n' | sort)
}

# What the packages need comes first, so that afterwards nothing but the packages is new.
mkdir "$root/try"
cp "${packages[@]}" "$repository/samples/two-fingers.bmp" "$root/try/"
needed=()
for package in "${packages[@]}"; do
    while read -r name; do
        [[ $name == *kormelin* ]] || needed+=("$name")
    done < <(dpkg-deb -f "$package" Depends | tr ',' '\n' | sed 's/^ *//; s/[ (|].*//' | grep .)
done
inside apt-get -q update >/dev/null
install_there gcc g++ cmake make pkg-config libboost-dev "${needed[@]}"
list_files >"$root/try/before"

say "Install"
install_there $(cd "$root" && printf './%s\n' try/*.deb)
inside dpkg -l '*kormelin*' | tail -n +6

say "Examples, from the packages alone"
examples=/usr/share/doc/libvelmarinkormelinsegmentation-dev/examples
# shellcheck disable=SC2016 # the variables are the inner shell's
inside bash -euc '
    cd /try
    flags=$(pkg-config --cflags --libs velmarin-kormelin-segmentation)
    gcc -std=c99 -o c-example '$examples'/segment.c $flags
    g++ -std=c++17 -o cpp-example '$examples'/fingers.cpp $flags
    cmake -S '$examples'/consumer -B consumer >/dev/null
    cmake --build consumer >/dev/null
    ./c-example two-fingers.bmp
    ./cpp-example two-fingers.bmp finger
    consumer/segment two-fingers.bmp
    consumer/fingers two-fingers.bmp finger
    consumer/four_fingers two-fingers.bmp
    python3 -c "
import kormelin, numpy
data = numpy.fromfile(\"two-fingers.bmp\", numpy.uint8)
rows = data[1078:].reshape(-1, 808)[::-1, :807]
fingers = kormelin.segment(rows, 500)
assert len(fingers) == 2, fingers
print(\"python\", [(f.x, f.y, f.width, f.height) for f in fingers])"
    if command -v kormelin-segment >/dev/null; then
        kormelin-segment two-fingers.bmp
        kormelin-segment --version
    fi'

say "Remove"
mapfile -t names < <(for package in "${packages[@]}"; do dpkg-deb -f "$package" Package; done)
inside apt-get -q purge -y -o Dpkg::Use-Pty=0 "${names[@]}" >/dev/null
list_files >"$root/try/after"
diff "$root/try/before" "$root/try/after" || { echo "the packages leave traces" >&2 && exit 1; }
echo "no file is left, none is changed"
