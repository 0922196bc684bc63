#!/usr/bin/env bash
# Installs what is missing, then builds and runs all tests in all supported ways.
#
#     scripts/test.sh            all stages
#     scripts/test.sh --quick    only the release build and its tests
#     scripts/test.sh STAGE...   the named stages: release windows clang asan tsan coverage lint packages
#
# Without names, the stage windows is left out if its tools cannot be installed; the verdict says so.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/lib.sh
. scripts/lib.sh

all_stages=(release windows clang asan tsan coverage lint packages)
stages=("${all_stages[@]}")
left_out=""
case "${1:-}" in
-h | --help)
    sed -n '2,9s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
--quick)
    stages=(release)
    ;;
?*)
    stages=("$@")
    ;;
esac

# Builds a preset and runs the tests that its test preset selects.
build_and_test()
{
    # Without ZV_WITH_ARAVIS, tests that need the parser would be left out silently.
    cmake --preset "$1" --log-level=WARNING -D ZV_WITH_ARAVIS=ON &&
        cmake --build --preset "$1" &&
        ctest --preset "$1" -j "$(nproc)"
}

# The same for Windows, where the parser is not available.
build_and_test_for_windows()
{
    # shellcheck disable=SC2086
    ensure_packages $packages_to_build_windows || return 1
    ZV_WINDOWS_PREFIX=$(scripts/windows_dependencies.sh) || return 1
    export ZV_WINDOWS_PREFIX
    # An older build folder may refer to other libraries.
    cmake --fresh --preset windows --log-level=WARNING &&
        cmake --build --preset windows &&
        ctest --preset windows -j "$(nproc)"
}

run_stage()
{
    case "$1" in
    release) build_and_test release ;;
    clang) build_and_test clang ;;
    asan) build_and_test asan ;;
    tsan) build_and_test tsan ;;
    coverage) scripts/coverage.sh ;;
    lint) scripts/lint.sh ;;
    windows) build_and_test_for_windows ;;
    packages) scripts/package.sh --try ;;
    *)
        echo "Unknown stage '$1'; there are: ${all_stages[*]}" >&2
        return 2
        ;;
    esac
}

step "Packages"
# shellcheck disable=SC2086
ensure_packages $packages_to_test

passed=()
for stage in "${stages[@]}"; do
    if [ "$stage" = windows ] && [ $# -eq 0 ] && ! can_build_for_windows; then
        left_out="; left out: windows, whose tools cannot be installed here"
        continue
    fi
    step "Stage $stage"
    if ! run_stage "$stage"; then
        step "FAILED in stage '$stage' (passed before it: ${passed[*]:-none})"
        echo "Run it alone with: scripts/test.sh $stage"
        exit 1
    fi
    passed+=("$stage")
done
step "PASSED: ${passed[*]}$left_out"
