#!/usr/bin/env bash
# Makes the packages of this commit in build/packages: for Linux a .deb and a tar archive, for Windows a zip archive and
# an installer, for each a bill of materials (SPDX), and SHA256SUMS over all of them.
#
#     scripts/package.sh                   everything that this machine can make: five minutes on two cores
#     scripts/package.sh --linux           the packages for Linux alone: half of that
#     scripts/package.sh --try             then installs, upgrades and removes them: one minute more, the first time three
#     scripts/package.sh --check           and builds them a second time, in another folder and with other copies of the
#                                          libraries for Windows, to compare the bytes: eight minutes more
#
# Needs Debian 12, and root or sudo for the packages that are missing and for trying.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/lib.sh
. scripts/lib.sh

checks=()
windows=wanted
for argument in "$@"; do
    case "$argument" in
    --try) checks=(materials linux setup zip) ;;
    --check) checks=(materials linux setup zip same_bytes) ;;
    --linux) windows="not asked for" ;;
    *)
        sed -n '2,13s/^# \{0,1\}//p' "$0"
        [ "$argument" = -h ] || [ "$argument" = --help ] || exit 2
        exit 0
        ;;
    esac
done

out=$PWD/build/packages
made=no
passed=()
finish()
{
    local code=$?
    if [ $code -ne 0 ] || [ $made = no ]; then
        step "PACKAGES FAILED (exit code $code)" >&2
        return
    fi
    step "PACKAGES MADE in build/packages: Linux; Windows $windows; passed: ${passed[*]:-no checks asked for}"
    cat "$out/SHA256SUMS"
}
trap finish EXIT

# The time of every file in a package, and the reason that two builds of a commit are the same. CMake takes no other
# note of the clock.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
umask 022
# ccache may help, but must not rewrite paths: they would reach the debugging information, and with it the build ids.
export CCACHE_BASEDIR="" CCACHE_HASHDIR=1
unset CCACHE_NOHASHDIR
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

# pack BUILD-FOLDER: lets CPack make its packages and moves them to the others.
pack()
{
    rm -rf "$1/packages"
    (cd "$1" && cpack) >"$1/cpack.log" 2>&1 || { tail -n 30 "$1/cpack.log" && return 1; }
    find "$1/packages" -maxdepth 1 -type f -exec mv {} "$out/" \;
}

# describe PACKAGE BILL [option of materials.py]...
describe()
{
    local package=$1 bill=$2
    shift 2
    scripts/materials.py spdx "$package" --version "$version" --time "$SOURCE_DATE_EPOCH" --output "$bill" "$@"
}

step "Packages of this machine"
# shellcheck disable=SC2086
ensure_packages $packages_to_package
if [ "$windows" = wanted ] && ! can_build_for_windows; then
    windows="left out: its tools cannot be installed here"
fi
echo "Windows: $windows"

# Nothing of an earlier build, of other sources or options, goes into a package.
rm -rf "$out" build/package build/package-windows
mkdir -p "$out"

step "Linux"
cmake --preset package --log-level=WARNING
cmake --build --preset package
pack build/package
describe "$(echo "$out"/*.deb)" "$out/zvgentl-$version-linux-$(uname -m).spdx.json"

if [ "$windows" = wanted ]; then
    step "Windows"
    ZV_WINDOWS_PREFIX=$(scripts/windows_dependencies.sh) # another tree may make another folder the current one
    export ZV_WINDOWS_PREFIX
    cmake --preset windows -B build/package-windows --log-level=WARNING -D CMAKE_BUILD_TYPE=RelWithDebInfo \
        -D ZV_REPRODUCIBLE=ON -D ZV_DOCUMENTATION=ON -D BUILD_TESTING=OFF -D ZV_BUILD_BENCHMARKS=OFF
    cmake --build build/package-windows
    pack build/package-windows
    describe "$(echo "$out"/*.zip)" "$out/zvgentl-$version-windows-x86_64.spdx.json" \
        --versions "$ZV_WINDOWS_PREFIX/versions"
    windows=made
fi
(cd "$out" && sha256sum -- *.* >SHA256SUMS)
made=yes

if [ ${#checks[@]} -gt 0 ]; then
    made=no
    # shellcheck disable=SC2086
    ensure_packages $packages_to_test_packages $packages_to_package_for_windows
    for name in "${checks[@]}"; do
        [ "$name" != zip ] || [ "$windows" = made ] || continue
        step "Check $name"
        as_root=()
        [ "$name" != linux ] || [ "$(id -u)" -eq 0 ] || as_root=(sudo)
        "${as_root[@]}" "tests/packages/check_$name.sh" "$out"
        passed+=("$name")
    done
    made=yes
fi
