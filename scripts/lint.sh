#!/usr/bin/env bash
# Runs clang-tidy on all sources except tests; every finding is an error. Configures the clang preset if necessary.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/clang
[ -e $build/compile_commands.json ] || cmake --preset clang --log-level=WARNING

mapfile -t sources < <(git ls-files 'src/*.cpp' 'logger/*.cpp' 'simulator/*.cpp' 'tools/*.cpp' 'examples/*.cpp' |
    grep -v /win32/)
echo "clang-tidy on ${#sources[@]} files"
if ! printf '%s\0' "${sources[@]}" |
    xargs -0 -n 4 -P "$(nproc)" clang-tidy-14 -p $build --quiet 2> >(grep -v 'warnings generated' >&2); then
    echo "lint: clang-tidy has findings" >&2
    exit 1
fi
echo "lint: clean"
