"""Fails when clang-format would change a C or C++ file under version control."""

import argparse
import shutil
import subprocess
import sys
from pathlib import Path

from cpp_source import CPP_SUFFIXES
from words import tracked_files

PROGRAMS = ("clang-format", "clang-format-14")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root")
    parser.add_argument("files", nargs="*", help="only these, relative to the repository")
    options = parser.parse_args()
    program = next((found for found in map(shutil.which, PROGRAMS) if found), None)
    if program is None:
        print("clang-format is missing; install the package of that name")
        return 1
    names = options.files or tracked_files(options.root)
    files = [n for n in names if Path(n).suffix in CPP_SUFFIXES and (Path(options.root) / n).is_file()]
    if not files:
        return 0
    return subprocess.run([program, "--dry-run", "-Werror", *files], cwd=options.root, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
