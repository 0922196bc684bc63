"""Holds the table of log lines against the producer's source, or writes a new one.

A row stands for a call site: logger, number, function in braces, priorities, message with printf placeholders.
The source says most of it; what it cannot say (a priority chosen at run time) is written in the table by hand
and kept when a new table is written. So is a sixth field, the reason why a line that is contract cannot be reached.
"""

import argparse
import sys
from pathlib import Path

from cpp_source import PRIORITIES, call_sites, cpp_files

HEADER = "# Every line that the producer writes: logger, call-site number, function in braces, priorities, message.\n"


def read_table(path):
    rows = {}
    for line in Path(path).read_text().splitlines():
        if line and not line.startswith("#"):
            logger, number, function, priorities, pattern, *reason = line.split("\t")
            rows[(logger, int(number))] = (function, tuple(priorities.split("|")), pattern, *reason)
    return rows


def sites_of(source):
    return {(s.unit, s.number): s for path in cpp_files(source) for s in call_sites(path)}


def problems(rows, sites):
    for key, site in sites.items():
        if key not in rows:
            yield f"{site.place}: [{site.number}] of {site.unit} has no row in the table"
            continue
        function, priorities, pattern = rows[key][:3]
        for name, in_source, in_table in (("function", site.function, function),
                                          ("priority", site.priorities, priorities),
                                          ("text", site.pattern, pattern)):
            if in_source is not None and in_source != in_table:
                yield f"{site.place}: [{site.number}] has the {name} {in_source!r}, the table says {in_table!r}"
    for key, row in rows.items():
        if key not in sites:
            yield f"[{key[1]}] of {key[0]} is in the table, but nowhere in the source: {row[2]!r}"
        if not set(row[1]) <= set(PRIORITIES):
            yield f"[{key[1]}] of {key[0]}: unknown priorities {row[1]}"


def written(rows, sites):
    text = HEADER
    for key, site in sorted(sites.items()):
        old = rows.get(key, ("*", ("debug", "trace"), "%s"))
        function = old[0] if site.function is None else site.function
        priorities = old[1] if site.priorities is None else site.priorities
        pattern = old[2] if site.pattern is None else site.pattern
        text += "\t".join((key[0], str(key[1]), function, "|".join(priorities), pattern, *old[3:])) + "\n"
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("source")
    parser.add_argument("table")
    parser.add_argument("--write", action="store_true", help="bring the table up to date")
    options = parser.parse_args()
    rows, sites = read_table(options.table), sites_of(options.source)
    if options.write:
        Path(options.table).write_text(written(rows, sites))
        return 0
    found = list(problems(rows, sites))
    print("\n".join(found))
    return 1 if found or not rows else 0


if __name__ == "__main__":
    sys.exit(main())
