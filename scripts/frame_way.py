#!/usr/bin/env python3
"""Draws the way of a frame, with the nanoseconds and instructions of each step.

The nanoseconds come from the results of scripts/bench.sh, the instructions from callgrind's inclusive counts.
"""

import argparse
import json
import re
import subprocess
import sys
import tempfile
from collections import defaultdict
from dataclasses import dataclass, field
from html import escape
from pathlib import Path

ROW = "frame without a wait, 1 camera, 64 buffers"
FRAMES = 1024
# The steps: the function that callgrind counts, how often a frame calls it, and what happens in it.
STEPS = [
    ("bare_deliver", "callback", "the library: find and mark the buffer, ask for timestamp and id, append and signal"),
    ("EventGetData", "EventGetData", "the consumer: check the handle, take the oldest entry, look up the private pointer"),
    ("DSGetBufferInfo", "8 DSGetBufferInfo", "the consumer: check stream and buffer, find the command, hand the value over"),
    ("DSQueueBuffer", "DSQueueBuffer", "the consumer: check stream and buffer, mark it, give it back to the library"),
]
SMALLEST_PART = 0.04  # of a step, to be named
PASSED_ON = 0.85


@dataclass
class Function:
    own: int = 0
    callees: dict = field(default_factory=lambda: defaultdict(int))  # name -> inclusive cost


def read_callgrind(text):
    """The functions of a callgrind file, with the costs of their calls."""
    names, functions = {}, defaultdict(Function)
    current = callee = None
    for line in text.splitlines():
        named = re.match(r"(c?fn)=\((\d+)\)(?: (.*))?$", line)
        if named:
            kind, number, name = named.groups()
            if name:
                names[number] = name
            if kind == "fn":
                current = functions[names[number]]
            else:
                callee = names[number]
        elif re.match(r"[+\-*\d]", line) and current is not None:
            cost = int(line.split()[1])
            if callee is None:
                current.own += cost
            else:
                current.callees[callee] += cost
                callee = None
    return functions


def inclusive(functions, name):
    return sum(function.callees.get(name, 0) for function in functions.values())


def short(name):
    """A C++ function without parameters, template arguments and namespaces."""
    name = re.sub(r"'\d+$", "", name)
    while re.search(r"<[^<>]*>", name):
        name = re.sub(r"<[^<>]*>", "", name)
    name = re.sub(r"\(.*", "", name).split(" ")[-1]
    return "::".join(name.split("::")[-2:]).replace("zvgentl::", "")


def parts_of(functions, name):
    """What a step spends its instructions on: its own and those of what it calls, largest first."""
    total = inclusive(functions, name)
    function, own = functions[name], functions[name].own
    # A function that only passes on is skipped.
    while function.callees and max(function.callees.values()) >= PASSED_ON * total:
        name = max(function.callees, key=function.callees.get)
        function = functions[name]
        own += function.own
    parts = defaultdict(int)
    for callee, cost in function.callees.items():
        parts[short(callee)] += cost
    named = {part: cost for part, cost in parts.items() if cost >= SMALLEST_PART * total}
    rest = total - own - sum(named.values())
    ordered = sorted(named.items(), key=lambda part: -part[1]) + [("itself", own)]
    return ordered + ([("other calls", rest)] if rest > 0 else [])


def count_instructions(programs):
    program = programs / "bench_frame_path"
    listed = subprocess.run([program, "--list"], check=True, capture_output=True, text=True).stdout
    row = next(line.split()[0] for line in listed.splitlines() if line.endswith("  " + ROW))
    with tempfile.TemporaryDirectory() as scratch:
        output = Path(scratch) / "callgrind.out"
        subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={output}", "--toggle-collect=counted_work",
                        program, "--row", row, "--count-instructions", str(FRAMES)], check=True, capture_output=True)
        return read_callgrind(output.read_text())


def step_times(results):
    begin = "step of a frame: "
    return {row["name"][len(begin):]: row["measured"] for row in results["rows"] if row["name"].startswith(begin)}


# The picture.
WIDTH, LEFT, BAR_WIDTH, STEP_HEIGHT = 1060, 250, 780, 118
COLOURS = ("#3b6ea5", "#5b8fc4", "#86b0d8", "#b3cfe8", "#4f9d8f", "#7fbfb2", "#b0dad2", "#c9c9c9", "#e0e0e0")


def text(x, y, content, size=13, weight="normal", colour="#222222"):
    return (f'<text x="{x:.0f}" y="{y:.0f}" font-size="{size}" font-weight="{weight}" fill="{colour}">'
            f"{escape(content)}</text>")


def draw_step(y, step, nanoseconds, parts, scale):
    _, title, meaning = step
    total = sum(cost for _, cost in parts) / FRAMES
    yield text(16, y + 22, title, 15, "bold")
    yield text(16, y + 44, f"{nanoseconds:.0f} ns" if nanoseconds is not None else "not timed")
    yield text(16, y + 63, f"{total:.0f} instructions")
    yield text(LEFT, y + 18, meaning, 12, colour="#555555")
    x = LEFT
    for i, (_, cost) in enumerate(parts):
        width = cost / FRAMES * scale
        yield f'<rect x="{x:.1f}" y="{y + 28}" width="{width:.1f}" height="22" fill="{COLOURS[i % len(COLOURS)]}"/>'
        x += width
    x, line = LEFT, 0
    for i, (name, cost) in enumerate(parts):
        label = f"{name} {cost / FRAMES:.0f}"
        width = 22 + 6.6 * len(label)
        if x + width > WIDTH - 8:
            x, line = LEFT, line + 1
        yield f'<rect x="{x:.0f}" y="{y + 61 + 17 * line}" width="9" height="9" fill="{COLOURS[i % len(COLOURS)]}"/>'
        yield text(x + 13, y + 70 + 17 * line, label, 11)
        x += width


def draw(functions, times):
    steps = [(step, parts_of(functions, step[0])) for step in STEPS]
    scale = BAR_WIDTH / (max(sum(cost for _, cost in parts) for _, parts in steps) / FRAMES)
    height = 50 + STEP_HEIGHT * len(steps)
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" viewBox="0 0 {WIDTH} {height}" '
           'font-family="sans-serif">')
    yield f'<rect width="{WIDTH}" height="{height}" fill="#ffffff"/>'
    total = sum(cost for _, parts in steps for _, cost in parts) / FRAMES
    known = [times[step[1]] for step, _ in steps if step[1] in times]
    time = f"{sum(known):.0f} ns, " if len(known) == len(steps) else ""
    yield text(16, 30, f"The way of a frame: {time}{total:.0f} instructions", 17, "bold")
    for i, (step, parts) in enumerate(steps):
        y = 50 + STEP_HEIGHT * i
        yield f'<line x1="16" y1="{y}" x2="{WIDTH - 16}" y2="{y}" stroke="#dddddd"/>'
        yield from draw_step(y, step, times.get(step[1]), parts, scale)
    yield "</svg>"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=Path, required=True, help="folder of the benchmarks")
    parser.add_argument("--results", type=Path, required=True, help="file that scripts/bench.sh has written")
    parser.add_argument("--picture", type=Path, required=True, help="file to write, SVG")
    options = parser.parse_args()
    times = step_times(json.loads(options.results.read_text()))
    options.picture.write_text("\n".join(draw(count_instructions(options.programs), times)) + "\n")
    print(f"Picture: {options.picture}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
