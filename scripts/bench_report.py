#!/usr/bin/env python3
"""Puts the results of the benchmark programs together: one table and one JSON file. See scripts/bench.sh.

Exit code 0: no gate is missed, 1: at least one is.
"""

import argparse
import datetime
import json
import platform
import re
import subprocess
import sys
from pathlib import Path

PROGRAMS = ("frame_path", "delivery", "pipelines", "cyclic", "operations", "heap", "genapi", "aravis")
COLUMNS = ("what", "anchor", "anchor time", "measured time", "result", "gate", "verdict")
BEGIN, END = "<!-- The table begins. -->", "<!-- The table ends. -->"


def processor():
    found = re.search(r"^model name\s*: (.*)$", Path("/proc/cpuinfo").read_text(), re.M)
    return found.group(1) if found else platform.machine()


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True).stdout.strip()


def machine(load, rounds):
    return {
        "date": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"),
        "commit": output_of("git", "rev-parse", "--short", "HEAD"),
        "processor": processor(),
        "processors": int(output_of("nproc")),
        "kernel": platform.release(),
        "compiler": output_of("g++", "--version").splitlines()[0],
        "load_before": load,
        "load_after": " ".join(Path("/proc/loadavg").read_text().split()[:3]),
        "rounds": rounds,
    }


def collect(folder, load, rounds):
    """The results of all programs that have run."""
    rows = []
    for program in PROGRAMS:
        file = folder / f"{program}.json"
        if file.exists():
            rows += [dict(row, program=program) for row in json.loads(file.read_text())]
    return {"machine": machine(load, rounds), "rows": rows}


def time_text(nanoseconds):
    if nanoseconds is None:
        return "-"
    for unit, size in (("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.2f} {unit}"
    return f"{nanoseconds:.1f} ns"


def number_text(number, unit):
    return f"{number:.2f}" if unit == "x" else f"{number:.2f} {unit}"


def cells(row):
    gate = row.get("gate")
    bound = {"at most": "<=", "at least": ">="}
    return (
        row["name"],
        row["anchor"] or "-",
        time_text(row.get("anchor_ns")),
        time_text(row.get("subject_ns")),
        number_text(row["measured"], row["unit"]) if "measured" in row else "-",
        f"{bound[gate['bound']]} {number_text(gate['limit'], row['unit'])}" if gate else "-",
        row["verdict"],
    )


def print_table(rows):
    lines = [COLUMNS] + [cells(row) for row in rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(COLUMNS))]
    for line in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())


def print_summary(rows):
    for verdict in ("passed", "missed", "no result"):
        print(f"{verdict}: {sum(row['verdict'].startswith(verdict) for row in rows)}")


def markdown(results):
    where = results["machine"]
    yield (f"{where['date']}, commit {where['commit']}: {where['processors']} processors ({where['processor']}), Linux "
           f"{where['kernel']}, {where['compiler']}.")
    yield f"Load before {where['load_before']}, after {where['load_after']}; {where['rounds']} rounds."
    yield ""
    yield "| " + " | ".join(COLUMNS) + " |"
    yield "|" + "---|" * len(COLUMNS)
    for row in results["rows"]:
        verdict = f"**{row['verdict']}**" if row["verdict"] == "missed" else row["verdict"]
        yield "| " + " | ".join(cells(row)[:-1] + (verdict,)) + " |"


def write_document(document, results):
    text = document.read_text()
    begin, end = text.index(BEGIN) + len(BEGIN), text.index(END)
    document.write_text(text[:begin] + "\n" + "\n".join(markdown(results)) + "\n" + text[end:])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--folder", type=Path, required=True, help="where the programs wrote their results")
    parser.add_argument("--load", help="the machine's load before the programs ran")
    parser.add_argument("--rounds", type=int, help="rounds of each result")
    parser.add_argument("--document", type=Path, help="only write the table of earlier results into this document")
    options = parser.parse_args()
    file = options.folder / "results.json"
    if options.document:
        results = json.loads(file.read_text())
        write_document(options.document, results)
    else:
        results = collect(options.folder, options.load, options.rounds)
        file.write_text(json.dumps(results, indent=2) + "\n")
    print_table(results["rows"])
    print_summary(results["rows"])
    print(f"Results: {file}")
    return 1 if any(row["verdict"] == "missed" for row in results["rows"]) else 0


if __name__ == "__main__":
    sys.exit(main())
