#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test in every way that the project promises.
#
#     scripts/test.sh            all of it: about 30 minutes on two cores
#     scripts/test.sh --quick    the release build and its tests alone
#     scripts/test.sh STAGE...   the named stages: release clang asan tsan coverage lint packages, and
#                                windows, which the first line leaves out
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/lib.sh
. scripts/lib.sh

all_stages=(release clang asan tsan coverage lint packages)
stages=("${all_stages[@]}")
case "${1:-}" in
-h | --help)
    sed -n '2,8s/^# \{0,1\}//p' "$0"
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
    local wanted=(-D ZV_WITH_ARAVIS=ON) # or the tests that need it would be left out without a word
    if [ "$1" = windows ]; then
        wanted=(--fresh) # the libraries may be others than last time
    fi
    cmake --preset "$1" --log-level=WARNING "${wanted[@]}" &&
        cmake --build --preset "$1" &&
        ctest --preset "$1" -j "$(nproc)"
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
    # shellcheck disable=SC2086
    windows) ensure_packages $packages_to_build_windows && scripts/windows_dependencies.sh >/dev/null &&
        build_and_test windows ;;
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
    step "Stage $stage"
    if ! run_stage "$stage"; then
        step "FAILED in stage '$stage' (passed before it: ${passed[*]:-none})"
        echo "Run it alone with: scripts/test.sh $stage"
        exit 1
    fi
    passed+=("$stage")
done
step "PASSED: ${passed[*]}"
