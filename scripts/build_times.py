#!/usr/bin/env python3
"""Says how long the build takes, and where.

    scripts/build_times.py report [BUILD-FOLDER]   where the time of the last full build went, from ninja's log
    scripts/build_times.py measure                 times what people wait for, in a fresh clone of this commit without
                                                   the compiler cache, and compares it with the goals
"""

import argparse
import collections
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

# What people wait for, on two cores: the seconds that it may take.
GOALS = {
    "fresh clone to the demo's verdict": 150,
    "release build with all its tests": 300,
    "a change in one command to its test's verdict": 15,
    "a change in one module to its test's verdict": 20,
}


def read_log(build):
    """The seconds of each output that the last build made, by ninja's log."""
    times = {}
    for line in (build / ".ninja_log").read_text().splitlines():
        fields = line.split("\t")
        if len(fields) == 5:
            start, end, _, output, _ = fields
            times[output] = (int(end) - int(start)) / 1000
    return times


def folder_of(output):
    """The source folder that an output belongs to: two levels of tests/, one level of the others."""
    if not output.endswith((".o", ".obj", ".gch", ".pch")):
        return "linking and others"
    parts = Path(output).parts
    return "/".join(parts[:2]) if parts[0] == "tests" else parts[0]


def report(build, top):
    """Prints the seconds of all jobs by folder, and the longest jobs."""
    times = read_log(build)
    seconds, jobs = collections.Counter(), collections.Counter()
    for output, spent in times.items():
        seconds[folder_of(output)] += spent
        jobs[folder_of(output)] += 1
    print(f"{'folder':24}{'jobs':>6}{'seconds':>10}")
    for folder, spent in seconds.most_common():
        print(f"{folder:24}{jobs[folder]:6}{spent:10.1f}")
    print(f"{'all':24}{sum(jobs.values()):6}{sum(seconds.values()):10.1f}\n")
    print("The longest:")
    for output, spent in sorted(times.items(), key=lambda row: -row[1])[:top]:
        print(f"{spent:8.1f}  {output}")
    return {folder: round(spent, 1) for folder, spent in seconds.items()}


def run(folder, *command):
    """Runs a command in the folder, quietly unless it fails; answers the seconds."""
    began = time.monotonic()
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        print("\n".join(done.stdout.splitlines()[-30:]))
        sys.exit(f"build_times: failed: {' '.join(command)}")
    return time.monotonic() - began


def after_change(clone, source, test):
    """Changes a source file in a way that the compiler cannot ignore; builds and runs the test program."""
    with open(clone / source, "a", encoding="utf-8") as file:
        file.write("\nstatic_assert(sizeof(char) == 1);\n")
    built = run(clone, "cmake", "--build", "--preset", "release", "--target", test)
    return built + run(clone, "ctest", "--preset", "release", "-R", f"^{test}$")


def measure(work):
    """Times every goal in a clone below work. Answers the seconds by the goal's name, and those by folder."""
    clone = work / "clone"
    run(work, "git", "clone", "--quiet", str(ROOT), str(clone))
    results = {}

    def note(name, seconds):
        results[name] = round(seconds, 1)
        print(f"{name}: {seconds:.1f} s", flush=True)

    demo, release, command, module = GOALS
    note(demo, run(clone, "scripts/demo.sh"))
    shutil.rmtree(clone / "build")
    note(release, run(clone, "cmake", "--preset", "release", "--log-level=WARNING")
         + run(clone, "cmake", "--build", "--preset", "release")
         + run(clone, "ctest", "--preset", "release", "-j", str(os.cpu_count())))
    print()
    folders = report(clone / "build/release", 12)
    print()
    note(command, after_change(clone, "tools/zvgentl/commands/get.cpp", "unit_tools"))
    note(module, after_change(clone, "src/modules/InterfaceModule.cpp", "unit_producer"))
    return results, folders


def main():
    """Reads the command line."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    reporting = commands.add_parser("report", help="where the time of the last full build went")
    reporting.add_argument("build", nargs="?", type=Path, default=ROOT / "build/release", metavar="BUILD-FOLDER")
    reporting.add_argument("--top", type=int, default=20, help="how many of the longest jobs to list")
    measuring = commands.add_parser("measure", help="time what people wait for and compare it with the goals")
    measuring.add_argument("--json", type=Path, help="file for the results")
    arguments = parser.parse_args()

    if arguments.command == "report":
        if not (arguments.build / ".ninja_log").exists():
            sys.exit(f"build_times: nothing was built in {arguments.build}")
        report(arguments.build, arguments.top)
        return 0

    os.environ["CCACHE_DISABLE"] = "1"
    with tempfile.TemporaryDirectory(prefix="build-times-") as work:
        results, folders = measure(Path(work))
    print(f"\n{'what people wait for':48}{'seconds':>9}{'goal':>6}")
    missed = 0
    for name, goal in GOALS.items():
        verdict = "" if results[name] <= goal else "  missed"
        missed += bool(verdict)
        print(f"{name:48}{results[name]:9.1f}{goal:6}{verdict}")
    if arguments.json:
        arguments.json.write_text(json.dumps({"cores": os.cpu_count(), "seconds": results, "goals": GOALS,
                                              "seconds_by_folder": folders}, indent=2) + "\n", encoding="utf-8")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
