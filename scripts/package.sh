#!/usr/bin/env bash
# Makes the packages of this commit in build/packages: a .deb and a tar archive for Linux, a zip archive and an installer
# for Windows, a bill of materials (SPDX) for each system, and SHA256SUMS of all of them.
#
#     scripts/package.sh                   makes everything that this machine can build
#     scripts/package.sh --linux           makes only the packages for Linux
#     scripts/package.sh --try             also installs, upgrades and removes them
#     scripts/package.sh --check           also builds them a second time, in another folder and with another build of
#                                          the libraries for Windows, and compares the bytes
#
# Needs Debian 12, and root or sudo to install missing packages and for --try and --check.
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
    --linux) windows="not requested" ;;
    *)
        sed -n '2,12s/^# \{0,1\}//p' "$0"
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
    step "PACKAGES MADE in build/packages: Linux; Windows $windows; checks passed: ${passed[*]:-none requested}"
    cat "$out/SHA256SUMS"
}
trap finish EXIT

# The time of every file in a package, so that two builds of a commit are the same. CMake does not use the clock for
# anything else.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
umask 022
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

# pack BUILD-FOLDER: has CPack make the folder's packages and moves them to the others.
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

step "Packages that this script needs"
# shellcheck disable=SC2086
ensure_packages $packages_to_package
if [ "$windows" = wanted ] && ! can_build_for_windows; then
    windows="left out because its tools cannot be installed here"
fi
echo "Windows: $windows"

# build PRESET: builds what is packaged in the preset's own folder, where the tests may have built it already. A fresh
# configuration forgets options that somebody set by hand; what they changed is built again.
build()
{
    cmake --fresh --preset "$1" --log-level=WARNING -D ZV_DOCUMENTATION=ON
    cmake --build --preset "$1" --target ZVGRLibGenTL ZVGRLib ZVLogger zvgentl documentation
}

rm -rf "$out"
mkdir -p "$out"

step "Linux"
build release
pack build/release
describe "$(echo "$out"/*.deb)" "$out/zvgentl-$version-linux-$(uname -m).spdx.json"

if [ "$windows" = wanted ]; then
    step "Windows"
    ZV_WINDOWS_PREFIX=$(scripts/windows_dependencies.sh) # another tree may change the current one
    export ZV_WINDOWS_PREFIX
    build windows
    pack build/windows
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
