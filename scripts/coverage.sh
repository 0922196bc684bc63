#!/bin/sh
# Builds the coverage preset, runs the producer's tests and prints how much they cover of src/ and of what it uses of
# platform/. Fails below 98 % of the lines or 96 % of the branches.
#
#     scripts/coverage.sh [--skip-build] [gcovr options, such as --html-details build/coverage/report.html]
set -eu

cd "$(dirname "$0")/.."
build=build/coverage

if [ "${1:-}" = --skip-build ]; then
    shift
else
    cmake --preset coverage
    cmake --build --preset coverage
fi
find "$build" -name '*.gcda' -delete
ctest --preset coverage -j "$(nproc)" --quiet --output-log "$build/ctest.log" || {
    tail -n 40 "$build/ctest.log"
    echo "coverage: tests failed, so the figures would be meaningless" >&2
    exit 1
}

# Branches that no test can take are left out: the compiler adds one to every call that might throw (the catch blocks
# that they lead to still count as lines), and to lines without code of their own.
exec gcovr --root . --filter 'src/' \
    --filter 'platform/posix/(Waiter|process)' "$build" \
    --exclude-throw-branches --exclude-unreachable-branches \
    --print-summary --fail-under-line 98 --fail-under-branch 96 --sort-uncovered "$@"
