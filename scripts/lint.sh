#!/usr/bin/env bash
# Runs clang-tidy, with every finding an error, over the sources that are not tests. Needs the clang preset configured;
# does it when it is not.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/clang
[ -e $build/compile_commands.json ] || cmake --preset clang --log-level=WARNING

mapfile -t sources < <(git ls-files 'src/*.cpp' 'logger/*.cpp' 'simulator/*.cpp' 'tools/*.cpp' 'examples/*.cpp' |
    grep -v /win32/)
echo "clang-tidy over ${#sources[@]} files"
if ! printf '%s\0' "${sources[@]}" |
    xargs -0 -n 4 -P "$(nproc)" clang-tidy-14 -p $build --quiet 2> >(grep -v 'warnings generated' >&2); then
    echo "lint: clang-tidy has findings" >&2
    exit 1
fi
echo "lint: clean"
