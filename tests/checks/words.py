"""Rejects marks of unfinished work and paths of somebody's machine in files under version control."""

import argparse
import re
import subprocess
import sys
from pathlib import Path

# Put together here, so that this file passes its own check.
MARKS = "|".join(("TO" + "DO", "FIX" + "ME", "XX" + "X", "HA" + "CK"))
MARK = re.compile(rf"\b(?:{MARKS})\b")
MACHINE_PATH = re.compile(r"(?<![\w.$}>~])/(?:home|root|work|Users|mnt)/\w")
MAX_LINES = 600
ONE_FILE = {"include/GenTL/GenTL.h"}  # consumers include the standard's header under this one name
SOURCE = {".c", ".cpp", ".h", ".py", ".cmake", ".sh"}


def tracked_files(root):
    listed = subprocess.run(["git", "-C", root, "ls-files", "-z"], check=True, capture_output=True).stdout
    return [name for name in listed.decode().split("\0") if name]


def problems_of(name, text):
    for number, line in enumerate(text.splitlines(), 1):
        for pattern, what in ((MARK, "a mark of unfinished work"), (MACHINE_PATH, "a path of one machine")):
            found = pattern.search(line)
            if found:
                yield f"{name}:{number}: {what}: {found.group(0)}"
    if Path(name).suffix in SOURCE and name not in ONE_FILE and text.count("\n") > MAX_LINES:
        yield f"{name}: longer than {MAX_LINES} lines"


def self_test():
    tests = [("a // " + "TO" + "DO: later", True), ("x = '" + "/ho" + "me/me/x'", True), ("a method", False),
             ("todo_list", False), ("${dir}/home/x", False), ("line\n" * (MAX_LINES + 1), True)]
    for text, is_bad in tests:
        if bool(list(problems_of("a.cpp", text))) != is_bad:
            yield f"self-test: {text[:40]!r} was {'accepted' if is_bad else 'rejected'}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", nargs="?")
    parser.add_argument("--self-test", action="store_true")
    options = parser.parse_args()
    if options.self_test:
        problems = list(self_test())
    else:
        problems = []
        for name in tracked_files(options.root):
            path = Path(options.root) / name
            if not path.is_file():
                continue
            try:
                problems += problems_of(name, path.read_text())
            except UnicodeDecodeError:
                continue  # a picture or an archive
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
