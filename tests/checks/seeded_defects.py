"""Seeds defects into the producer's source, one at a time, and says which of them the tests catch.

seeded_defects.toml lists the defects, and apart from them known gaps: defects that no test catches yet, which are
tried only when --only names them. Defects are seeded into a clone, never into the tree that this is called from, so
changes that are not committed are not tested. For each defect the test programs that it affects are built and run
until one fails: first those that caught other defects of the same file, then the quick ones. A run that takes too
long counts as caught. The exit code is 1 when a defect survives, and 2 when there is no verdict: the tests fail
without a defect, or a defect does not apply or does not compile.
"""

import argparse
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import tomllib
from collections import Counter
from dataclasses import asdict, dataclass, field
from pathlib import Path

from cpp_source import without_comments

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
TABLE = HERE / "seeded_defects.toml"
MARKER = ".git/seeded_defects"  # in a clone that this script made and may check out again
KINDS = ("removed check", "swapped checks", "wrong code", "missing release", "off by one", "wrong table row",
         "missing log line", "wrong log text", "output on failure", "wrong library call", "wrong last error",
         "missing reset")
CAUGHT, TIMED_OUT, SURVIVED, DOES_NOT_COMPILE = "caught", "timed out", "SURVIVED", "DOES NOT COMPILE"
FAILED_TEST = re.compile(r"\[  FAILED  \] ([\w/]+\.[\w/]+)")


class Problem(Exception):
    """Something that leaves no verdict: its text is for the user."""


@dataclass
class Defect:
    """One row of the table: `before`, which occurs once in `file`, becomes `after`."""

    id: str
    kind: str
    file: str
    before: str
    after: str

    def places(self, text):
        """Where `before` is found: comments are left out, and all white space counts as the same."""
        pattern = r"\s+".join(map(re.escape, self.before.split()))
        return [match.span() for match in re.finditer(pattern, without_comments(text))]

    def applied_to(self, text):
        (start, end), = self.places(text)
        return text[:start] + self.after.strip() + text[end:]


@dataclass
class Result:
    """What became of one defect."""

    id: str
    kind: str
    file: str
    outcome: str = SURVIVED
    caught_by: str = ""
    failed: list = field(default_factory=list)
    seconds: float = 0.0


@dataclass
class Program:
    """A test program: its build target, its CTest entries and how long they take without a defect."""

    target: str
    tests: list = field(default_factory=list)
    seconds: float = 0.0


def read_table(path=TABLE):
    """The defects, and those that no test catches yet."""
    with open(path, "rb") as file:
        table = tomllib.load(file)
    return [Defect(**row) for row in table["defect"]], [Defect(**row) for row in table.get("known_gap", ())]


def table_problems(defects, root):
    """What is wrong with the table on its own, and which defects do not apply to the tree."""
    for name, count in Counter(defect.id for defect in defects).items():
        if count > 1:
            yield f"{name}: {count} defects have this id"
    for defect in defects:
        path = Path(root) / defect.file
        if defect.kind not in KINDS:
            yield f"{defect.id}: unknown kind {defect.kind!r}"
        if defect.before.split() == defect.after.split():
            yield f"{defect.id}: changes nothing"
        if not defect.file.startswith(("src/", "platform/")) or not path.is_file():
            yield f"{defect.id}: there is no source file {defect.file}"
            continue
        found = len(defect.places(path.read_text()))
        if found != 1:
            yield f"{defect.id}: its text occurs {found} times in {defect.file}, not once"


def chosen(defects, gaps, ids):
    unknown = set(ids or ()) - {defect.id for defect in defects + gaps}
    if unknown:
        raise Problem(f"unknown defect: {', '.join(sorted(unknown))}; see --list")
    return [defect for defect in defects + gaps if defect.id in ids] if ids else defects


def run(*command, **more):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, errors="replace", check=False, **more)


def demand(what, *command, **more):
    done = run(*command, **more)
    if done.returncode != 0:
        raise Problem(f"{what} failed:\n{done.stdout[-4000:]}")
    return done.stdout


class Clone:
    """A clone of the repository with a build folder of its own."""

    def __init__(self, folder, options):
        self.folder = Path(folder).resolve()
        self.build_folder = self.folder / "build" / options.preset
        self.options = options
        self.environment = dict(os.environ)
        if shutil.which("ccache"):
            for language in ("C", "CXX"):
                self.environment.setdefault(f"CMAKE_{language}_COMPILER_LAUNCHER", "ccache")

    def check_out(self):
        commit = demand("looking up the commit", "git", "-C", ROOT, "rev-parse", self.options.commit + "^{commit}")
        commit = commit.strip()
        if not self.folder.exists() or not any(self.folder.iterdir()):
            demand("cloning", "git", "clone", "--quiet", "--no-checkout", ROOT, self.folder)
            (self.folder / MARKER).touch()
        elif not (self.folder / MARKER).exists():
            raise Problem(f"{self.folder} is not empty, and not a clone that this script made")
        demand("fetching", "git", "-C", self.folder, "fetch", "--quiet", ROOT, commit)
        demand("checking out", "git", "-C", self.folder, "checkout", "--quiet", "--force", "--detach", commit)
        return commit

    def configure(self):
        demand("configuring", "cmake", "--preset", self.options.preset, "--log-level=WARNING",
               cwd=self.folder, env=self.environment)

    def build(self, target):
        return run("cmake", "--build", self.build_folder, "--target", target, env=self.environment)

    def selection(self):
        """The arguments that make CTest choose the tests: as the preset for coverage does, unless told."""
        if self.options.tests or self.options.label:
            name, label = self.options.tests, self.options.label
        else:
            presets = json.loads((self.folder / "CMakePresets.json").read_text())["testPresets"]
            coverage = next((preset for preset in presets if preset["name"] == "coverage"), {})
            include = coverage.get("filter", {}).get("include", {})
            name, label = include.get("name"), include.get("label")
        return (["-R", name] if name else []) + (["-L", label] if label else [])

    def programs(self):
        listed = json.loads(demand("listing the tests", "ctest", "--test-dir", self.build_folder,
                                   "--show-only=json-v1", *self.selection()))
        found = {}
        for test in listed["tests"]:
            path = Path(test["command"][0])
            if self.build_folder in path.parents:  # the others prepare something for the tests
                target = str(path.relative_to(self.build_folder))
                found.setdefault(target, Program(target)).tests.append(test["name"])
        return list(found.values())

    def test(self, program, fail_fast=True):
        """Runs the tests of a program; the output, and whether they passed, None when they took too long."""
        names = "|".join(map(re.escape, program.tests))
        environment = dict(self.environment, GTEST_FAIL_FAST="1") if fail_fast else self.environment
        limit = max(self.options.timeout, 10 * program.seconds)
        # A session of its own, so that whatever hangs ends with it.
        with subprocess.Popen(["ctest", "--test-dir", self.build_folder, "-R", f"^({names})$", "--stop-on-failure",
                               "--output-on-failure"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              errors="replace", env=environment, start_new_session=True) as tests:
            try:
                output, _ = tests.communicate(timeout=limit)
                return output, tests.returncode == 0
            except subprocess.TimeoutExpired:
                os.killpg(tests.pid, signal.SIGKILL)
                return tests.communicate()[0], None


def prove_clean(clone, programs):
    """Fails unless every program passes without a defect; notes how long each takes."""
    for program in programs:
        start = time.monotonic()
        output, passed = clone.test(program, fail_fast=False)
        program.seconds = time.monotonic() - start
        if not passed:
            how = "fails" if passed is False else f"takes longer than {clone.options.timeout} s"
            raise Problem(f"{program.target} {how} without a defect:\n{output[-4000:]}")


def try_defect(clone, defect, programs):
    result = Result(defect.id, defect.kind, defect.file)
    start = time.monotonic()
    path = clone.folder / defect.file
    original = path.read_text()
    path.write_text(defect.applied_to(original))
    try:
        for program in programs:
            built = clone.build(program.target)
            if built.returncode != 0:
                result.outcome = DOES_NOT_COMPILE
                result.failed = [line for line in built.stdout.splitlines() if "error:" in line][:3]
                break
            if "no work to do" in built.stdout:
                continue  # it has nothing of the file that was changed
            output, passed = clone.test(program)
            if not passed:
                result.outcome = CAUGHT if passed is False else TIMED_OUT
                result.caught_by = program.target
                result.failed = list(dict.fromkeys(FAILED_TEST.findall(output)))[:3]
                break
    finally:
        path.write_text(original)
    result.seconds = round(time.monotonic() - start, 1)
    return result


def try_all(clone, defects, programs):
    """Tries each defect; the programs that caught most defects of the same file go first."""
    results, catches = [], Counter()
    for number, defect in enumerate(defects, 1):
        programs.sort(key=lambda p: (-catches[defect.file, p.target], p.seconds))
        result = try_defect(clone, defect, programs)
        catches[defect.file, result.caught_by] += 1
        results.append(result)
        print(f"{number:3} of {len(defects)}  {result.seconds:6.1f} s  {result.outcome:<16}  {result.id}", flush=True)
    return results


def evidence_of(result):
    """What the outcome rests on: a test program with the first test that failed, or what the compiler says."""
    program = Path(result.caught_by).name
    if result.outcome == CAUGHT:
        return f"{program}: {result.failed[0] if result.failed else 'ended early'}"
    return program or " ".join(result.failed[:1])


def text_of(results):
    width = max(len(result.id) for result in results)
    return "\n".join(f"{r.id:<{width}}  {r.kind:<18}  {r.outcome:<16}  {evidence_of(r)}".rstrip() for r in results)


def summary_of(results):
    caught = Counter(r.kind for r in results if r.outcome in (CAUGHT, TIMED_OUT))
    lines = [f"{kind:<18}  {caught[kind]:2} of {count:2} caught"
             for kind, count in sorted(Counter(r.kind for r in results).items())]
    return "\n".join(lines)


def verdict_of(results):
    """The last line and the exit code."""
    survivors = [r.id for r in results if r.outcome == SURVIVED]
    broken = [r.id for r in results if r.outcome == DOES_NOT_COMPILE]
    if survivors:
        return f"NOT ALL CAUGHT: {', '.join(survivors)} survived", 1
    if broken:
        return f"ERROR IN THE TABLE: {', '.join(broken)} does not compile", 2
    late = sum(r.outcome == TIMED_OUT for r in results)
    return f"All {len(results)} defects were caught" + (f", {late} of them by a time-out" if late else ""), 0


def seed(options, defects, folder):
    start = time.monotonic()
    clone = Clone(folder, options)
    commit = clone.check_out()
    problems = list(table_problems(defects, clone.folder))
    if problems:
        raise Problem("\n".join(problems))
    print(f"Building {options.target} of {commit[:10]} in {clone.build_folder}", flush=True)
    clone.configure()
    built = clone.build(options.target)
    if built.returncode != 0:
        raise Problem(f"building without a defect failed:\n{built.stdout[-4000:]}")
    programs = clone.programs()
    if not programs:
        raise Problem("CTest knows no test program of that selection")
    prove_clean(clone, programs)
    ready = time.monotonic()
    count = sum(len(program.tests) for program in programs)
    print(f"{len(programs)} programs pass all {count} tests of CTest, ready after {ready - start:.0f} s", flush=True)

    results = try_all(clone, defects, programs)
    seconds = time.monotonic() - ready
    verdict, code = verdict_of(results)
    print(f"\n{text_of(results)}\n\n{summary_of(results)}\n\n{verdict} ({seconds:.0f} s)")
    if options.json:
        record = {"commit": commit, "verdict": verdict, "seconds": round(seconds),
                  "programs": [asdict(program) for program in programs],
                  "defects": [asdict(result) for result in results]}
        Path(options.json).write_text(json.dumps(record, indent=1) + "\n")
    return code


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--list", action="store_true", help="list the defects")
    what.add_argument("--check", action="store_true", help="only see whether every defect applies to this tree once")
    parser.add_argument("--only", nargs="+", metavar="ID", help="only these defects")
    parser.add_argument("--json", metavar="FILE", help="write the results there as well")
    parser.add_argument("--commit", default="HEAD", help="the commit to seed the defects into (default: %(default)s)")
    parser.add_argument("--work", metavar="DIR", help="clone into this folder, or use the clone that an earlier run "
                        "left there (default: a temporary folder)")
    parser.add_argument("--preset", default="debug", help="the preset to configure (default: %(default)s)")
    parser.add_argument("--target", default="producer_tests",
                        help="the target that builds the test programs (default: %(default)s)")
    parser.add_argument("--tests", metavar="REGEX", help="the CTest entries to run, by name (default: with --label, "
                        "those that the test preset `coverage` runs)")
    parser.add_argument("--label", metavar="REGEX", help="the CTest entries to run, by label")
    parser.add_argument("--timeout", type=float, default=30, metavar="SECONDS",
                        help="for one run of one test program, which gets more when it takes more than a tenth of "
                        "that without a defect (default: %(default)s)")
    options = parser.parse_args()
    try:
        defects, gaps = read_table()
        if options.list:
            for defect in defects + gaps:
                note = "  (known gap)" if defect in gaps else ""
                print(f"{defect.id:<34}  {defect.kind:<18}  {defect.file}{note}")
            return 0
        if options.check:
            problems = list(table_problems(defects + gaps, ROOT))
            print("\n".join(problems) or f"All {len(defects + gaps)} defects apply")
            return 1 if problems else 0
        defects = chosen(defects, gaps, options.only)
        if options.work:
            return seed(options, defects, options.work)
        with tempfile.TemporaryDirectory(prefix="seeded_defects.") as folder:
            return seed(options, defects, folder)
    except Problem as problem:
        print(problem, file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
