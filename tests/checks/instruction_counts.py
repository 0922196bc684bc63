"""Compares the instructions of the way of a frame with recorded counts, and fails where one has grown by more than 5 %.

Callgrind counts them, in the benchmarks. Unlike times, they do not depend on what else the machine does. They do depend on
the compiler: with another one than that of the record, the check is skipped (exit code 77).
"""

import argparse
import json
import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

TOLERANCE = 0.05
SKIPPED = 77


@dataclass
class Measurement:
    name: str
    program: str
    row: str  # of the program
    repeat: int


MEASUREMENTS = [
    Measurement("frame, 1 camera, 16 buffers", "bench_frame_path", "frame without a wait, 1 camera, 16 buffers", 512),
    Measurement("frame, 1 camera, 64 buffers", "bench_frame_path", "frame without a wait, 1 camera, 64 buffers", 512),
    Measurement("frame, 1 camera, 1024 buffers", "bench_frame_path", "frame without a wait, 1 camera, 1024 buffers", 1024),
    Measurement("frame, 16 cameras, 64 buffers", "bench_frame_path", "frame without a wait, 16 cameras, 64 buffers", 512),
    Measurement("frame, cyclic, 16 buffers", "bench_cyclic", "cyclic, 1 MiB, 0 buffers held: speed", 512),
    Measurement("delivery of an event", "bench_delivery", "delivery to a sleeping consumer, one core, 16 buffers", 512),
    Measurement("disabled log line", "bench_operations", "disabled log line", 4096),
    Measurement("announcing a buffer", "bench_operations", "announce 4096 buffers", 64),
]


def run(command):
    # Nothing of the caller's environment may change the counts.
    environment = {"PATH": os.environ.get("PATH", ""), "HOME": "/", "TMPDIR": "/tmp", "LC_ALL": "C"}
    done = subprocess.run(command, env=environment, capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))} failed:\n{done.stdout}{done.stderr}")
    return done.stdout


def row_number(program, name):
    for line in run([program, "--list"]).splitlines():
        number, row = line.strip().split("  ", 1)
        if row == name:
            return number
    raise RuntimeError(f"{program} has no row '{name}'")


def collected(callgrind_output):
    found = re.search(r"^(?:summary|totals): (\d+)$", callgrind_output, re.M)
    if not found:
        raise RuntimeError("callgrind has counted nothing")
    return int(found.group(1))


def measure(folder, measurement):
    program = folder / measurement.program
    with tempfile.TemporaryDirectory() as scratch:
        output = Path(scratch) / "callgrind.out"
        run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={output}", "--toggle-collect=counted_work", program,
             "--row", row_number(program, measurement.row), "--count-instructions", str(measurement.repeat)])
        return round(collected(output.read_text()) / measurement.repeat, 1)


def measure_all(folder):
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return dict(zip((m.name for m in MEASUREMENTS), pool.map(lambda m: measure(folder, m), MEASUREMENTS)))


def compare(recorded, now):
    """Yields a line for each count, and whether it is a problem."""
    for name, count in now.items():
        if name not in recorded:
            yield f"{name}: {count} instructions, not recorded", True
            continue
        growth = count / recorded[name] - 1
        line = f"{name}: {count} instructions, recorded {recorded[name]} ({growth:+.1%})"
        yield line, growth > TOLERANCE
    for name in recorded.keys() - now.keys():
        yield f"{name}: recorded, but no longer measured", True


def self_test():
    tests = [({"a": 100}, {"a": 104}, False), ({"a": 100}, {"a": 106}, True), ({"a": 100}, {"a": 50}, False),
             ({"a": 100}, {"a": 100, "b": 1}, True), ({"a": 100, "b": 1}, {"a": 100}, True)]
    for recorded, now, is_bad in tests:
        if any(is_problem for _, is_problem in compare(recorded, now)) != is_bad:
            yield f"self-test: {now} against {recorded} was {'accepted' if is_bad else 'rejected'}"
    if collected("events: Ir\nsummary: 1234\n") != 1234:
        yield "self-test: the count was not found"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=Path, help="folder of the benchmarks")
    parser.add_argument("--record", type=Path, help="file of the recorded counts")
    parser.add_argument("--compiler", help="what the benchmarks were compiled with")
    parser.add_argument("--update", action="store_true", help="record the present counts")
    parser.add_argument("--self-test", action="store_true")
    options = parser.parse_args()
    if options.self_test:
        problems = list(self_test())
        print("\n".join(problems))
        return 1 if problems else 0

    record = {} if options.update else json.loads(options.record.read_text())
    if not options.update and record["compiler"] != options.compiler:
        print(f"skipped: the counts were recorded with {record['compiler']}, the benchmarks built with {options.compiler}")
        return SKIPPED
    now = measure_all(options.programs)
    if options.update:
        options.record.write_text(json.dumps({"compiler": options.compiler, "instructions": now}, indent=2) + "\n")
        print(f"recorded in {options.record}")
        return 0
    lines = list(compare(record["instructions"], now))
    for line, is_problem in lines:
        print(f"{'GROWN   ' if is_problem else 'ok      '}{line}")
    if any(is_problem for _, is_problem in lines):
        print("If this has to be, record the new counts: docs/performance.md says how.")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
