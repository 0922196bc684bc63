"""Checks what the built producer shows to the loader.

The export list, the functions of GenTL.h and the dynamic symbols are the same 57 names; nothing keeps the library
loaded; it needs only the libraries that it should, and finds them beside itself.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

from cpp_source import without_comments

FUNCTIONS = 57
NEEDED = [r"libZVGRLib\.so", r"libZVLogger\.so", r"libPocoFoundation\.so(\.\d+)*", r"libstdc\+\+\.so\.\d+",
          r"libgcc_s\.so\.\d+", r"libm\.so\.\d+", r"libc\.so\.\d+", r"ld-linux.*\.so\.\d+"]
SANITIZERS = [r"lib[atu](b)?san\.so\.\d+", r"libdl\.so\.\d+", r"libpthread\.so\.\d+", r"librt\.so\.\d+"]


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def header_functions(path):
    return set(re.findall(r"^GC_API\s+(\w+)\s*\(", without_comments(Path(path).read_text()), re.M))


def listed_functions(path):
    lines = [line.split(";")[0].strip() for line in Path(path).read_text().splitlines()]
    lines = [line for line in lines if line]
    if not lines or not lines[0].startswith("LIBRARY") or lines[1] != "EXPORTS":
        raise SystemExit(f"{path}: expected LIBRARY and EXPORTS")
    return lines[2:]


def list_problems(header, names):
    functions = header_functions(header)
    if len(functions) != FUNCTIONS:
        yield f"{header} declares {len(functions)} functions instead of {FUNCTIONS}"
    if len(names) != len(set(names)):
        yield "the export list names a function twice"
    for name in sorted(functions ^ set(names)):
        yield f"{name} is {'not in the export list' if name in functions else 'in the export list only'}"


def symbol_problems(library, names):
    symbols = {}
    for line in output_of("nm", "-D", "--defined-only", library).splitlines():
        parts = line.split()
        symbols[parts[-1].split("@")[0]] = parts[-2]
    for name in sorted(set(symbols) ^ set(names)):
        yield f"{name} is {'exported, but not listed' if name in symbols else 'listed, but not exported'}"
    for name, kind in symbols.items():
        if kind != "T" and name in names:
            yield f"{name} is exported as '{kind}' instead of code"
    if " UNIQUE " in output_of("readelf", "-W", "--dyn-syms", library):
        yield "a unique symbol would keep the library loaded"


def loader_problems(library, sanitized):
    entries = re.findall(r"\((NEEDED|RUNPATH|RPATH|SONAME|FLAGS_1)\)\s*(.*)", output_of("readelf", "-W", "-d", library))
    allowed = NEEDED + (SANITIZERS if sanitized else [])
    needed = [re.search(r"\[(.*)\]", value).group(1) for tag, value in entries if tag == "NEEDED"]
    for name in needed:
        if not any(re.fullmatch(pattern, name) for pattern in allowed):
            yield f"needs {name}"
    for own in ("libZVGRLib.so", "libZVLogger.so"):
        if own not in needed:
            yield f"does not need {own}"
    paths = [(tag, re.search(r"\[(.*)\]", value).group(1)) for tag, value in entries if tag in ("RUNPATH", "RPATH")]
    if paths != [("RUNPATH", "$ORIGIN")]:
        yield f"the search path is {paths} instead of RUNPATH $ORIGIN"
    if any(tag == "FLAGS_1" and "NODELETE" in value for tag, value in entries):
        yield "is marked to stay loaded"


LOGGER_SYMBOLS = r"InitLogger|ZVTimeElapsedUs|ZVReport|ZVReportedText|ZVSettings::.*|zvstring::.*|" \
                 r"operator\+\(zvstring const&, char const\*\)|ZVPocoLogger::.*|" \
                 r"(typeinfo|typeinfo name|vtable) for ZVPocoLogger"


def grabber_functions(path):
    text = without_comments(Path(path).read_text())
    return set(re.findall(r"^ZVGR_API\s+[\w\s*]*?\bZVGR_CALL\s+(\w+)\s*\(", text, re.M))


def companion_problems(grabber_header, grabber, logger):
    """What the two libraries beside the producer owe the loader: their interface, and nothing else."""
    functions = grabber_functions(grabber_header)
    symbols = {line.split()[-1] for line in output_of("nm", "-D", "--defined-only", grabber).splitlines()}
    for name in sorted(functions ^ symbols):
        yield f"{grabber}: {name} is {'not exported' if name in functions else 'exported, but not declared'}"
    for line in output_of("nm", "-D", "-C", "--defined-only", logger).splitlines():
        name = line.split(None, 2)[2]
        if not re.fullmatch(LOGGER_SYMBOLS, name):
            yield f"{logger}: {name} is exported"
    for library in (grabber, logger):
        dynamic = output_of("readelf", "-W", "-d", library)
        if re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", dynamic) != ["$ORIGIN"] or "(RPATH)" in dynamic:
            yield f"{library}: the search path is not RUNPATH $ORIGIN"
        if f"[{Path(library).name}]" not in "".join(re.findall(r"\(SONAME\).*", dynamic)):
            yield f"{library}: is not named after its file"
        if "NODELETE" in dynamic or " UNIQUE " in output_of("readelf", "-W", "--dyn-syms", library):
            yield f"{library}: would stay loaded"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--header", required=True)
    parser.add_argument("--list", required=True)
    parser.add_argument("--library", help="the built producer")
    parser.add_argument("--grabber-header")
    parser.add_argument("--grabber-library")
    parser.add_argument("--logger-library")
    parser.add_argument("--sanitized", action="store_true")
    options = parser.parse_args()
    names = listed_functions(options.list)
    problems = list(list_problems(options.header, names))
    if options.library:
        problems += symbol_problems(options.library, names)
        problems += loader_problems(options.library, options.sanitized)
    if options.grabber_library:
        problems += companion_problems(options.grabber_header, options.grabber_library, options.logger_library)
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
