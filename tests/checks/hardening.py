"""Checks that built or packaged files have what compiler and linker can do against errors that somebody exploits.

For ELF: full RELRO, no segment that can be written and executed, position-independent code, libraries only from the
file's own folder, and traces of stack protector, _FORTIFY_SOURCE, stack-clash protection, control-flow protection and
the assertions of the C++ library (not in the producer, which pays for them with every frame). For Windows: address
randomisation in 64 bits, data that is not executable, and the stack protector. With --commands also that every shipped
source is compiled with the options.
"""

import argparse
import json
import re
import struct
import subprocess
import sys
from pathlib import Path

BRANCH_TARGET = bytes.fromhex("f30f1efa")  # endbr64
STACK_FRAME = re.compile(rb"\x48\x81\xec(....)", re.S)  # sub $number,%rsp
PAGE = 4096  # of stack that may be skipped without touching it
OPTIONS = ["-fstack-protector-strong", "-fstack-clash-protection", "-fcf-protection"]
WINDOWS_OPTIONS = ["-fstack-protector-strong"]
WINDOWS_FLAGS = {"HIGH_ENTROPY_VA": 0x20, "DYNAMIC_BASE": 0x40, "NX_COMPAT": 0x100}
NOT_SHIPPED = ("tests/", "benchmarks/", "build/")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Elf:
    """What readelf tells of a file."""

    def __init__(self, path):
        self.data = Path(path).read_bytes()
        self.header = output_of("readelf", "-W", "-h", path)
        self.segments = output_of("readelf", "-W", "-l", path)
        self.dynamic = output_of("readelf", "-W", "-d", path)
        self.symbols = output_of("readelf", "-W", "--dyn-syms", path)
        self.relocations = output_of("readelf", "-W", "-r", path)
        self.code = []  # address, place in the file, size
        for line in output_of("readelf", "-W", "-S", path).splitlines():
            found = re.match(r"\s*\[ *\d+\] \.text\s+PROGBITS\s+(\w+) (\w+) (\w+)", line)
            if found:
                self.code.append(tuple(int(part, 16) for part in found.groups()))

    def imported(self):
        return set(re.findall(r" UND (\w+)", self.symbols))

    def bytes_at(self, address, size):
        """The code at an address; nothing when it is not in the section of code."""
        for start, place, length in self.code:
            if start <= address < start + length:
                return self.data[place + address - start:place + address - start + size]
        return None

    def frames(self):
        """The sizes of stack that functions take in one step."""
        return [struct.unpack("<I", size)[0] for _, place, length in self.code
                for size in STACK_FRAME.findall(self.data[place:place + length])]

    def functions(self):
        """The addresses of the functions that are reached through a pointer, as far as tables of the file tell."""
        exported = re.findall(r"^\s*\d+: (\w+)\s+\d+ FUNC\s+\w+\s+\w+\s+\d+ ", self.symbols, re.M)
        pointed_to = re.findall(r"R_X86_64_RELATIVE\s+([0-9a-f]+)", self.relocations)
        return {int(address, 16) for address in exported + pointed_to}


def layout_problems(elf):
    if not re.search(r"Type:\s+DYN", elf.header):
        yield "has a fixed address"
    if "GNU_RELRO" not in elf.segments or not re.search(r"BIND_NOW|\(FLAGS_1\).*\bNOW\b", elf.dynamic):
        yield "lacks full RELRO"
    flags = dict(re.findall(r"^\s+(\w+)\s+0x\w+ 0x\w+ 0x\w+ 0x\w+ 0x\w+ ([R ][W ][E ])", elf.segments, re.M))
    if "E" in flags.get("GNU_STACK", "E"):
        yield "has an executable stack"
    if re.search(r"0x\w+ RWE ", elf.segments):
        yield "has a segment that can be written and executed"
    if "(TEXTREL)" in elf.dynamic:
        yield "has code that the loader writes into"
    if re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", elf.dynamic) != ["$ORIGIN"] or "(RPATH)" in elf.dynamic:
        yield "does not look for its libraries in its own folder alone"
    if re.search(r"\(FLAGS_1\).*\b(NOOPEN|NODELETE)\b", elf.dynamic):
        yield "cannot be loaded at run time and unloaded"


def code_problems(elf, has_assertions):
    imported = elf.imported()
    if "__stack_chk_fail" not in imported:
        yield "lacks the stack protector"
    if not any(re.fullmatch(r"__\w+_chk", name) for name in imported):
        yield "lacks _FORTIFY_SOURCE"
    if has_assertions and not any("glibcxx_assert_fail" in name for name in imported):
        yield "lacks the assertions of the C++ library"
    if not re.search(r"Machine:.*X86-64", elf.header):
        return
    if any(PAGE < frame < 1 << 24 for frame in elf.frames()):
        yield "lacks stack-clash protection"
    starts = [elf.bytes_at(address, 4) for address in elf.functions()]
    starts = [start for start in starts if start is not None]
    if not starts or any(start != BRANCH_TARGET for start in starts):
        yield "lacks control-flow protection"


def windows_problems(data):
    optional = struct.unpack_from("<I", data, 0x3C)[0] + 24
    flags = struct.unpack_from("<H", data, optional + 70)[0]
    for name, bit in WINDOWS_FLAGS.items():
        if not flags & bit:
            yield f"lacks {name}"
    if b"stack smashing detected" not in data:
        yield "lacks the stack protector"


def file_problems(path):
    data = Path(path).read_bytes()
    if data[:4] == b"\x7fELF":
        elf = Elf(path)
        yield from layout_problems(elf)
        yield from code_problems(elf, has_assertions=Path(path).suffix != ".cti")
    elif data[:2] == b"MZ":
        yield from windows_problems(data)
    else:
        yield "is neither a program nor a library"


def command_problems(commands, root):
    for entry in commands:
        path = Path(entry["file"])
        name = path.relative_to(root).as_posix() if path.is_relative_to(root) else ""
        if not name or name.startswith(NOT_SHIPPED) or path.suffix == ".rc":
            continue
        arguments = entry["command"].split()
        is_windows = any("mingw" in argument for argument in arguments)
        for option in WINDOWS_OPTIONS if is_windows else OPTIONS:
            if option not in arguments or "-fno-" + option[2:] in arguments:
                yield f"{name} is compiled without {option}"
        levels = [a for a in arguments if re.match(r"-[DU]_FORTIFY_SOURCE", a)]
        if not is_windows and (not levels or levels[-1] not in ("-D_FORTIFY_SOURCE=3", "-D_FORTIFY_SOURCE=2")):
            yield f"{name} is compiled without _FORTIFY_SOURCE"
        if [a for a in arguments if re.match(r"-O", a)][-1:] == ["-O0"]:
            yield f"{name} is not optimised, so that _FORTIFY_SOURCE does nothing"


class Described:
    """A file as its tables describe it, in the place of a built one."""

    def __init__(self, **changes):
        self.header = "Type: DYN (Shared object file)\nMachine: Advanced Micro Devices X86-64\n"
        self.segments = ("  GNU_STACK      0x000000 0x0000000000000000 0x0000000000000000 0x000000 0x000000 RW  0x10\n"
                         "  GNU_RELRO      0x001000 0x0000000000001000 0x0000000000001000 0x000100 0x000100 R   0x1\n")
        self.dynamic = "(FLAGS) BIND_NOW\n(RUNPATH) Library runpath: [$ORIGIN]\n(FLAGS_1) Flags: NOW\n"
        self.names = {"__stack_chk_fail", "__snprintf_chk", "_ZSt21__glibcxx_assert_failPKciS0_S0_"}
        self.data = BRANCH_TARGET + bytes.fromhex("4881ec00100000")
        self.start = 0
        self.__dict__.update(changes)
        self.code = [(0, 0, len(self.data))]

    def imported(self):
        return self.names

    def functions(self):
        return {self.start}

    bytes_at = Elf.bytes_at
    frames = Elf.frames


def self_test():
    good = Described()
    bad = [Described(header=good.header.replace("DYN", "EXEC")),
           Described(segments=good.segments.replace("GNU_RELRO", "LOAD")),
           Described(dynamic=good.dynamic.replace("BIND_NOW", "").replace("NOW", "")),
           Described(segments=good.segments.replace("RW ", "RWE")),
           Described(segments=good.segments.replace("GNU_STACK", "LOAD")),
           Described(segments=good.segments.replace("R   0x1", "RWE 0x1000")),
           Described(dynamic=good.dynamic + "(TEXTREL)"),
           Described(dynamic=good.dynamic.replace("$ORIGIN", "$ORIGIN:/usr/lib")),
           Described(dynamic=good.dynamic.replace("RUNPATH", "RPATH")),
           Described(dynamic=good.dynamic.replace("Flags: NOW", "Flags: NOW NOOPEN")),
           Described(data=BRANCH_TARGET + bytes.fromhex("4881ec10100000")), Described(start=1),
           *(Described(names=good.names - {name}) for name in good.names)]
    for number, elf in enumerate([good, *bad]):
        if bool([*layout_problems(elf), *code_problems(elf, True)]) != (number > 0):
            yield f"self-test: file {number} was {'accepted' if number else 'rejected'}"
    if [*code_problems(Described(names=good.names - {"_ZSt21__glibcxx_assert_failPKciS0_S0_"}), False)]:
        yield "self-test: the producer was rejected for want of assertions"

    options = "g++ -O2 " + " ".join(OPTIONS) + " -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3"
    commands = [(options, False), (options + " -O0", True), (options + " -U_FORTIFY_SOURCE", True),
                (options + " -fno-stack-protector-strong", True), ("g++ -O2", True),
                ("x86_64-w64-mingw32-g++ -O2 -fstack-protector-strong", False), ("x86_64-w64-mingw32-g++ -O2", True)]
    for command, is_bad in commands:
        for file, expected in (("/a/src/x.cpp", is_bad), ("/a/tests/x.cpp", False), ("/b/x.cpp", False)):
            if bool([*command_problems([{"file": file, "command": command}], Path("/a"))]) != expected:
                yield f"self-test: '{command}' for {file} was {'accepted' if expected else 'rejected'}"

    image = bytearray(200)
    struct.pack_into("<I", image, 0x3C, 64)
    text = b"*** stack smashing detected ***"
    for flags, rest, is_bad in ((0x160, text, False), (0x160, b"", True), (0x140, text, True), (0x120, text, True),
                                (0x60, text, True)):
        struct.pack_into("<H", image, 64 + 24 + 70, flags)
        if bool([*windows_problems(bytes(image) + rest)]) != is_bad:
            yield f"self-test: a file for Windows with the flags {flags:#x} was {'accepted' if is_bad else 'rejected'}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--commands", type=Path, help="compile_commands.json")
    parser.add_argument("--source", type=Path, help="the folder of the sources")
    parser.add_argument("--self-test", action="store_true")
    parser.add_argument("files", nargs="*")
    options = parser.parse_args()
    if options.self_test:
        problems = list(self_test())
    else:
        problems = [f"{path}: {problem}" for path in options.files for problem in file_problems(path)]
        if options.commands:
            problems += command_problems(json.loads(options.commands.read_text()), options.source)
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
