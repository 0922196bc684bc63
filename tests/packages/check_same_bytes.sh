#!/usr/bin/env bash
# Builds the packages of the same commit a second time, in a clone in another folder, without the compiler cache and with
# newly built libraries for Windows, and compares them byte by byte. With local changes there is no commit to compare
# with, which is a failure.
#
#     tests/packages/check_same_bytes.sh PACKAGES-FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/packages/report.sh
. "$here/report.sh"
packages=$(cd "$1" && pwd)
root=$(cd "$here/../.." && pwd)
# A path of another length, with another file system behind it where the machine has one there.
elsewhere=$(mktemp -d "${TMPDIR:-/tmp}/a folder of another name.XXXXXX")
cache=$(mktemp -d "${TMPDIR:-/tmp}/cache.XXXXXX") # no blanks: not all makers of libraries expect them
trap 'rm -rf "$elsewhere" "$cache"' EXIT

check "there are no local changes" same "" "$(git -C "$root" status --porcelain --untracked-files=no)"
git clone --quiet "$root" "$elsewhere/source"
check "the clone is of the same commit" same "$(git -C "$root" rev-parse HEAD)" "$(git -C "$elsewhere/source" rev-parse HEAD)"

options=()
compgen -G "$packages/*windows*" >/dev/null || options=(--linux)
check "the clone can be packaged" env CCACHE_DISABLE=1 TZ=Asia/Tokyo XDG_CACHE_HOME="$cache" \
    "$elsewhere/source/scripts/package.sh" "${options[@]}"
check "both have the same packages" same "$(cd "$packages" && ls)" "$(cd "$elsewhere/source/build/packages" && ls)"
for package in "$packages"/*; do
    check "$(basename "$package") has the same bytes" cmp "$package" \
        "$elsewhere/source/build/packages/$(basename "$package")"
done
# What no comparison of two builds on one machine can see: paths that both have.
for package in "$packages"/*.deb "$packages"/*.tar.gz "$packages"/*.zip; do
    [ -e "$package" ] || continue
    mkdir -p "$elsewhere/unpacked"
    case "$package" in
    *.deb) dpkg-deb -x "$package" "$elsewhere/unpacked" ;;
    *.tar.gz) tar -C "$elsewhere/unpacked" -xzf "$package" ;;
    *.zip) unzip -q "$package" -d "$elsewhere/unpacked" ;;
    esac
    check "$(basename "$package") does not know where it was built" same "" \
        "$(grep -rlF -e "$root/" -e "${XDG_CACHE_HOME:-$HOME/.cache}/" "$elsewhere/unpacked" || true)"
    rm -rf "$elsewhere/unpacked"
done
verdict "Two builds of one commit"
