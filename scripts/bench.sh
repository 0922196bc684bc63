#!/usr/bin/env bash
# Installs what is missing, builds the benchmarks of the release preset and runs all of them. Prints one table: what was
# measured, against which anchor, the gate and whether it is passed. Exit code 0: all gates are passed, 1: one is missed,
# 2: something failed.
#
#     scripts/bench.sh               all rows, about five minutes on an idle machine
#     scripts/bench.sh --quick       fewer rounds: for a first look
#     scripts/bench.sh --document    the same as without, then writes the table and the picture of docs/performance.md
#
# The results are in build/bench/results.json. docs/performance.md says how to read them.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/lib.sh
. scripts/lib.sh

bin=build/release/bin
results=build/bench
programs=(frame_path delivery pipelines cyclic operations heap genapi aravis)
rounds=15
document=no
case "${1:-}" in
-h | --help)
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
--quick) rounds=5 ;;
--document) document=yes ;;
"") ;;
*)
    echo "Unknown option '$1'; see scripts/bench.sh --help" >&2
    exit 2
    ;;
esac

step "Packages"
# shellcheck disable=SC2086
ensure_packages $packages_to_bench || exit 2

step "Build the benchmarks in build/release"
cmake --preset release --log-level=WARNING >/dev/null && cmake --build --preset release --target benchmarks || exit 2

mkdir -p $results
rm -f $results/*.json
load=$(cut -d ' ' -f 1-3 /proc/loadavg)
for program in "${programs[@]}"; do
    step "bench_$program"
    if [ ! -x "$bin/bench_$program" ]; then
        echo "Left out: it was not built, because libaravis is missing."
        continue
    fi
    code=0
    "$bin/bench_$program" --rounds $rounds --json "$results/$program.json" || code=$?
    [ $code -le 1 ] || exit 2
done

step "All rows"
code=0
python3 scripts/bench_report.py --folder $results --load "$load" --rounds $rounds || code=$?
[ $code -le 1 ] || exit 2
if [ $document = yes ]; then
    python3 scripts/bench_report.py --folder $results --document docs/performance.md >/dev/null || [ $? -eq 1 ]
    python3 scripts/frame_way.py --programs $bin --results $results/results.json --picture docs/frame-way.svg || exit 2
fi
if [ $code -eq 0 ]; then
    step "PASSED: every gate that has a result"
else
    step "MISSED: at least one gate"
fi
exit $code
