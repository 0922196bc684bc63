"""Fails for every row of the table of log lines that no test has captured."""

import argparse
import sys
from pathlib import Path

from log_lines import read_table


def captured(folder):
    seen = set()
    for file in Path(folder).glob("*.txt"):
        for line in file.read_text().splitlines():
            logger, number = line.split("\t")
            seen.add((logger, int(number)))
    return seen


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("table")
    parser.add_argument("folder", help="where the tests noted the call sites that they captured")
    options = parser.parse_args()
    rows, seen = read_table(options.table), captured(options.folder)
    rows = {key: row for key, row in rows.items() if len(row) == 3}  # a fourth field: cannot be reached
    missing = sorted(key for key in rows if key not in seen)
    for logger, number in missing:
        function, priorities, pattern = rows[(logger, number)]
        print(f"never captured: {logger} [{number}] {{{function}}} {'|'.join(priorities)}: {pattern}")
    print(f"{len(rows) - len(missing)} of {len(rows)} lines captured")
    return 1 if missing or not rows else 0


if __name__ == "__main__":
    sys.exit(main())
