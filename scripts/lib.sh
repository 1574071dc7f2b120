# Shared by the scripts: where the repository is, and what it needs from Debian's packages. Source it, do not run it.

repository=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)

# What a build needs, and what tests, benchmarks and the contact sheet need beyond that.
build_packages=(cmake g++ ninja-build libboost-dev)
test_packages=(libgtest-dev libgmock-dev pkg-config python3-numpy python3-pytest python3-jsonschema imagemagick)
tool_packages=(libcli11-dev nlohmann-json3-dev libpng-dev libjpeg62-turbo-dev libtiff-dev libopenjp2-7-dev)
package_packages=(dpkg-dev fakeroot file gzip help2man lintian man-db python3)
bench_packages=(libbenchmark-dev)
opencv_packages=(libopencv-imgproc-dev)
abi_packages=(abigail-tools)
sheet_packages=(libgd-dev)
scale_packages=(slurmctld slurmd slurm-client munge parallel openssh-server openssh-client)

say()
{
    printf '\n== %s\n' "$*"
}

is_installed()
{
    dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# install_missing PACKAGE...: installs what is not there yet, as root or through sudo. Asks nothing of the network if
# all is there.
install_missing()
{
    local package missing=() root=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Missing packages: ${missing[*]}. Install them as root, or install sudo." >&2
            return 1
        fi
        root=(sudo)
    fi
    say "Installing ${missing[*]}"
    "${root[@]}" apt-get -q update
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends "${missing[@]}"
}

# configure PRESET [CMAKE_ARGUMENT...]: quiet unless it fails.
configure()
{
    local preset=$1 log=$repository/build/$1.configure.log
    shift
    mkdir -p "$repository/build"
    (cd "$repository" && cmake --preset "$preset" "$@") >"$log" 2>&1 || {
        cat "$log" >&2
        return 1
    }
}

# configure_product [CMAKE_ARGUMENT...]: the delivered library and its programs. A machine that only runs them needs no
# test framework.
configure_product()
{
    local tests=ON package
    for package in "${test_packages[@]}"; do
        is_installed "$package" || tests=OFF
    done
    configure release -DKORMELIN_BUILD_TESTS=$tests "$@"
}

# use_real_slaps: exports KORMELIN_SLAPS, the folder of real slap pictures, if it is not set and its usual place beside
# the repository is there.
use_real_slaps()
{
    if [ -z "${KORMELIN_SLAPS:-}" ] && [ -d "$repository/../shared/data/slaps" ]; then
        KORMELIN_SLAPS=$(cd -- "$repository/../shared/data/slaps" && pwd)
        export KORMELIN_SLAPS
    fi
}

# build PRESET [TARGET...]: all targets if none is named, on all cores.
build()
{
    local preset=$1
    shift
    (cd "$repository" && cmake --build --preset "$preset" --parallel "$jobs" ${1:+--target "$@"})
}

# build_state COMMIT FOLDER: the sources of a commit in FOLDER/sources, and of them FOLDER/core/libkormelin_core.a, as it
# would be delivered. Quiet unless it fails.
build_state()
{
    local commit=$1 folder=$2
    rm -rf "$folder/sources"
    mkdir -p "$folder/sources"
    git -C "$repository" archive "$commit" | tar -x -C "$folder/sources"
    {
        cmake -S "$folder/sources" -B "$folder/core" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORMELIN_BUILD_TESTS=OFF \
            -DKORMELIN_BUILD_EXAMPLES=OFF -DKORMELIN_BUILD_TOOLS=OFF &&
            cmake --build "$folder/core" --parallel "$jobs" --target kormelin_core
    } >"$folder/build.log" 2>&1 || {
        tail -n 20 "$folder/build.log" >&2
        return 1
    }
}
