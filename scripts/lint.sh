#!/usr/bin/env bash
# Runs clang-tidy over the sources that are not tests, with every finding an error.
#
#     scripts/lint.sh              all of them
#     scripts/lint.sh --since REV  those that changed since a revision, and those in the folder of a header that did
#
# Uses the compile commands of the preset asan, the one that builds with clang, and configures it if needed.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/asan
[ -e $build/compile_commands.json ] || cmake --preset asan --log-level=WARNING
# Headers that are generated or precompiled by the build are not needed for any of these sources.
mapfile -t sources < <(git ls-files 'src/*.cpp' 'platform/*.cpp' 'logger/*.cpp' 'simulator/*.cpp' 'tools/*.cpp' \
    'examples/*.cpp' 'genapi/*.cpp' | grep -v /win32/)

case "${1:-}" in
"") ;;
--since)
    changed=$(git diff --name-only "${2:?--since needs a revision}" -- '*.cpp' '*.h' .clang-tidy)
    if ! grep -qx .clang-tidy <<<"$changed"; then
        folders=$(grep '\.h$' <<<"$changed" | xargs -r -n 1 dirname | sort -u || true)
        mapfile -t sources < <(for source in "${sources[@]}"; do
            if grep -qxF -- "$source" <<<"$changed" || grep -qxF -- "$(dirname "$source")" <<<"$folders"; then
                echo "$source"
            fi
        done)
    fi
    ;;
*)
    sed -n '2,7s/^# \{0,1\}//p' "$0"
    [ "$1" = -h ] || [ "$1" = --help ] || exit 2
    exit 0
    ;;
esac

if [ ${#sources[@]} -eq 0 ]; then
    echo "lint: no source has changed"
    exit 0
fi
echo "clang-tidy over ${#sources[@]} files"
if ! printf '%s\0' "${sources[@]}" |
    xargs -0 -n 2 -P "$(nproc)" clang-tidy-14 -p $build --quiet 2> >(grep -v 'warnings generated' >&2); then
    echo "lint: clang-tidy has findings" >&2
    exit 1
fi
echo "lint: clean"
