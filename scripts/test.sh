#!/usr/bin/env bash
# Installs what is missing, then builds and runs the tests.
#
#     scripts/test.sh                all stages, as continuous integration does
#     scripts/test.sh --all          the same
#     scripts/test.sh --since REV    only the stages that can notice what changed since a revision: for everyday work
#     scripts/test.sh --quick        only the release build and its tests
#     scripts/test.sh STAGE...       the named stages: release windows asan tsan coverage packages lint
#     scripts/test.sh --plan FILE... prints the stages that a change of these files needs, and stops
#
# Without names, the stages for Windows are left out if their tools cannot be installed; the verdict says so. How long each
# stage took is written to build/test_times.json. docs/testing.md says what each stage guards against.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/lib.sh
. scripts/lib.sh

all_stages=(release windows asan tsan coverage packages lint)

# A pattern of paths, and the stages that a change there needs. Every path that matches counts, in every row.
stage_table='
^(src|include|platform)/                                                  release asan tsan coverage
^(logger|simulator|genapi)/                                               release asan tsan
^(tools|examples)/                                                        release asan
^tests/(api|support)/|^tests/unit/(api|log|modules|platform|port|resources|support)/ release asan tsan coverage
^tests/unit/(logger|simulator)/                                           release asan tsan
^tests/(unit/(tools|genapi)|system|genapi_differential|fuzz)/             release asan
threads_test                                                              tsan
^(src|logger|platform|simulator|tools|examples|genapi)/.*\.(cpp|h)$|^\.clang-tidy$    lint
win32|^cmake/(windows|toolchains)/|^cmake/Windows|^scripts/(windows|wine) windows
CMakeLists\.txt$|^CMakePresets\.json$|^cmake/                             release windows packages
^cmake/(linux|nsis)/|^tests/packages/|^scripts/(package|materials|documentation)|^LICENSE$ packages
.                                                                         release
'

# needed_stages FILE...: prints the stages for a change of these files, in the order in which they run.
needed_stages()
{
    local pattern names stage
    for stage in "${all_stages[@]}"; do
        while read -r pattern names; do
            [ -n "$pattern" ] || continue
            case " $names " in *" $stage "*) ;; *) continue ;; esac
            if printf '%s\n' "$@" | grep -qE -- "$pattern"; then
                echo "$stage"
                break
            fi
        done <<<"$stage_table"
    done
}

stages=("${all_stages[@]}")
chosen=all
since=""
case "${1:-}" in
-h | --help)
    sed -n '2,12s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
--plan)
    shift
    needed_stages "$@"
    exit 0
    ;;
--quick)
    stages=(release)
    chosen=quick
    ;;
--since)
    since=${2:?"--since needs a revision, such as HEAD~1 or main"}
    chosen="since $since"
    git rev-parse --verify --quiet "$since^{commit}" >/dev/null || { echo "There is no revision '$since'." >&2 && exit 2; }
    mapfile -t changed < <(git diff --name-only "$since" && git ls-files --others --exclude-standard)
    if [ ${#changed[@]} -eq 0 ]; then
        echo "Nothing has changed since $since: nothing to test."
        exit 0
    fi
    mapfile -t stages < <(needed_stages "${changed[@]}")
    echo "${#changed[@]} files have changed since $since: ${stages[*]}"
    ;;
--all | "") ;;
-*)
    echo "Unknown option '$1'; see scripts/test.sh --help" >&2
    exit 2
    ;;
*)
    stages=("$@")
    chosen=named
    for stage in "${stages[@]}"; do
        case " ${all_stages[*]} " in
        *" $stage "*) ;;
        *)
            echo "Unknown stage '$stage'; the stages are: ${all_stages[*]}" >&2
            exit 2
            ;;
        esac
    done
    ;;
esac

# Programs that run at the same time: more than cores, because many of them wait.
test_jobs=$((2 * $(nproc)))

# Builds a preset and runs the tests that its test preset selects.
build_and_test()
{
    # Without ZV_WITH_ARAVIS the comparison with that library would be left out without a word.
    cmake --preset "$1" --log-level=WARNING -D ZV_WITH_ARAVIS=ON &&
        cmake --build --preset "$1" &&
        ctest --preset "$1" -j "$test_jobs"
}

# The same for Windows, where there is no such library.
build_and_test_for_windows()
{
    # shellcheck disable=SC2086
    ensure_packages $packages_to_build_windows || return 1
    ZV_WINDOWS_PREFIX=$(scripts/windows_dependencies.sh) || return 1
    export ZV_WINDOWS_PREFIX
    # An older build folder may remember other libraries.
    cmake --fresh --preset windows --log-level=WARNING &&
        cmake --build --preset windows &&
        ctest --preset windows -j "$test_jobs"
}

# clang-tidy needs nothing but processors. Beside other stages it runs from the start, in what they leave idle while tests
# wait; its own stage then waits for the rest and shows what it found.
lint_log=build/lint.log
lint_job=""
start_lint()
{
    # It reads how the preset compiles. Made here, because two stages cannot make it at the same time.
    [ -e build/asan/compile_commands.json ] || cmake --preset asan --log-level=WARNING -D ZV_WITH_ARAVIS=ON
    # In a process group of its own, so that nothing of it outlives a run that fails.
    setsid nice -n 19 scripts/lint.sh ${since:+--since "$since"} >$lint_log 2>&1 &
    lint_job=$!
    trap 'kill -- -"$lint_job" 2>/dev/null || true' EXIT
}

run_lint()
{
    if [ -z "$lint_job" ]; then
        scripts/lint.sh ${since:+--since "$since"}
        return
    fi
    local code=0
    wait "$lint_job" || code=$?
    cat $lint_log
    return $code
}

run_stage()
{
    case "$1" in
    release | asan | tsan) build_and_test "$1" ;;
    coverage) scripts/coverage.sh ;;
    lint) run_lint ;;
    windows) build_and_test_for_windows ;;
    packages) scripts/package.sh --try ;;
    esac
}

# Writes the record of this run: the seconds of each stage, and on what.
times=()
write_times()
{
    mkdir -p build
    {
        printf '{"commit": "%s", "stages_chosen": "%s", "cores": %d, "verdict": "%s",\n "seconds": {' \
            "$(git rev-parse --short HEAD)" "$chosen" "$(nproc)" "$1"
        (IFS=, && printf '%s' "${times[*]}")
        printf '}, "total": %d}\n' "$SECONDS"
    } >build/test_times.json
}

step "Packages"
# shellcheck disable=SC2086
ensure_packages $packages_to_test

if [ ${#stages[@]} -gt 1 ] && [[ " ${stages[*]} " == *" lint "* ]]; then
    start_lint
fi

passed=()
left_out=""
for stage in "${stages[@]}"; do
    if [ "$stage" = windows ] && [ "$chosen" != named ] && ! can_build_for_windows; then
        left_out="; left out: windows, because its tools cannot be installed here"
        continue
    fi
    step "Stage $stage"
    began=$SECONDS
    if ! run_stage "$stage"; then
        times+=("\"$stage\": $((SECONDS - began))")
        write_times failed
        step "FAILED in stage '$stage' (passed before it: ${passed[*]:-none})"
        echo "Run it alone with: scripts/test.sh $stage"
        exit 1
    fi
    times+=("\"$stage\": $((SECONDS - began))")
    passed+=("$stage")
done
write_times passed
step "PASSED: ${passed[*]}$left_out"
