"""Checks the call-site numbers of the producer's log lines.

They are written as constants (`At{2251}`), unique within a logger's unit, and ascend through each file; the
files of a unit do not overlap. Numbers that existing logs and documents name are fixed.
"""

import argparse
import sys
import tempfile
from collections import defaultdict
from pathlib import Path

from cpp_source import API_UNIT, call_sites, cpp_files, odd_sites

FIXED = {
    589: ("GCInitLib", "Enter GCInitLib"),
    1504: ("TLOpen", "Enter TLOpen"),
    1855: ("TLOpenInterface", "duration: %lld usec"),
    2162: ("IFUpdateDeviceList", "duration: %lld usec"),
    2386: ("IFOpenDevice", "duration: %lld usec"),
}


def problems_of_file(path, sites):
    problems = [f"{path}:{line}: a call-site number is a constant, not {text}" for line, text in odd_sites(path)]
    for earlier, later in zip(sites, sites[1:]):
        if later.unit == earlier.unit and later.number <= earlier.number:
            problems.append(f"{later.place}: [{later.number}] does not follow [{earlier.number}]")
    return problems


def problems_of_units(files):
    problems, owner, spans = [], {}, defaultdict(list)
    for path, sites in files.items():
        for site in sites:
            first = owner.setdefault((site.unit, site.number), site)
            if first is not site:
                problems.append(f"{site.place}: [{site.number}] belongs to {first.place}")
        for unit in {site.unit for site in sites}:
            numbers = [site.number for site in sites if site.unit == unit]
            spans[unit].append((min(numbers), max(numbers), path))
    for unit, ranges in spans.items():
        ranges.sort()
        for lower, upper in zip(ranges, ranges[1:]):
            if upper[0] < lower[1]:
                problems.append(f"{upper[2]}: its numbers of unit {unit} run into those of {lower[2]}")
    return problems


def problems_of_fixed(files):
    written = {s.number: s for sites in files.values() for s in sites if s.unit == API_UNIT}
    problems = []
    for number, (function, pattern) in FIXED.items():
        site = written.get(number)
        if site is None or (site.function, site.pattern) != (function, pattern):
            problems.append(f"[{number}] must be the line '{pattern}' of {function}")
    return problems


def check(source, fixed=True):
    files = {}
    for path in cpp_files(source):
        sites = call_sites(path)
        problems = problems_of_file(path, sites)
        files[path] = sites
        yield from problems
    yield from problems_of_units(files)
    if fixed:
        yield from problems_of_fixed(files)


SELF_TESTS = {
    "a good file": ('void f() { log_error(api_logger, "f", At{1}, "x"); log_error(api_logger, "f", At{2}, "y"); }',
                    False),
    "a number used twice": ('log_error(l, "f", At{1}, "x"); log_error(l, "f", At{1}, "y");', True),
    "numbers that descend": ('log_error(l, "f", At{2}, "x"); log_error(l, "f", At{1}, "y");', True),
    "a line number": ('log_error(l, "f", At{__LINE__}, "x");', True),
    "a variable": ('log_error(l, "f", At{number}, "x");', True),
    "a commented-out site": ('// log_error(l, "f", At{1}, "x");\nlog_error(l, "f", At{1}, "y");', False),
    "a site in a text": ('log_error(l, "f", At{1}, "At{1}");', False),
}


def self_test():
    failures = []
    for name, (text, is_bad) in SELF_TESTS.items():
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "api").mkdir()
            (Path(folder) / "api" / "File.cpp").write_text(text)
            if bool(list(check(folder, fixed=False))) != is_bad:
                failures.append(f"self-test: {name} was {'accepted' if is_bad else 'rejected'}")
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "api").mkdir()
        (Path(folder) / "api" / "A.cpp").write_text('log_error(l, "f", At{1}, "x"); log_error(l, "f", At{9}, "x");')
        (Path(folder) / "api" / "B.cpp").write_text('log_error(l, "f", At{5}, "x");')
        if not list(check(folder, fixed=False)):
            failures.append("self-test: files whose numbers overlap were accepted")
        if not list(check(folder)):
            failures.append("self-test: missing fixed numbers were accepted")
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("source", nargs="?", help="the producer's source folder")
    parser.add_argument("--self-test", action="store_true")
    options = parser.parse_args()
    problems = self_test() if options.self_test else list(check(options.source))
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
