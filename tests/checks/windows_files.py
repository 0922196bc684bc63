"""Checks the built files for Windows: what they export and import, how they are protected, what they say they are.

The producer exports the 57 names of the export list as they are; the libraries beside it their interfaces, and nothing
else. Every file is open to address randomisation in 64 bits, has data that is not executable, and no fix-up at run
time that would write into code.
"""

import argparse
import re
import struct
import sys
from pathlib import Path

from exports import LOGGER_SYMBOLS, grabber_functions, listed_functions, output_of

CHARACTERISTICS = {"HIGH_ENTROPY_VA": 0x20, "DYNAMIC_BASE": 0x40, "NX_COMPAT": 0x100}
EXECUTABLE = 0x20000000  # of a section
SYSTEM_LIBRARIES = {"KERNEL32.dll", "msvcrt.dll", "ADVAPI32.dll", "SHELL32.dll", "USER32.dll", "WS2_32.dll",
                    "api-ms-win-core-synch-l1-2-0.dll"}  # the last one since Windows 8
RUN_TIME_LIBRARIES = {"libgcc_s_seh-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll", "libPocoFoundation.dll"}
OWN_LIBRARIES = {"ZVGRLib.dll", "ZVLogger.dll"}


class Image:
    """The parts of a file for Windows that the checks look at."""

    def __init__(self, path):
        self.path = path
        self.data = Path(path).read_bytes()
        header = struct.unpack_from("<I", self.data, 0x3C)[0]
        self.machine, section_count = struct.unpack_from("<HH", self.data, header + 4)
        optional_size = struct.unpack_from("<H", self.data, header + 20)[0]
        optional = header + 24
        self.base = struct.unpack_from("<Q", self.data, optional + 24)[0]
        self.characteristics = struct.unpack_from("<H", self.data, optional + 70)[0]
        self.base_relocations = struct.unpack_from("<II", self.data, optional + 112 + 5 * 8)[1]
        self.sections = []
        for i in range(section_count):
            start = optional + optional_size + i * 40
            size, address, raw_size, raw = struct.unpack_from("<IIII", self.data, start + 8)
            flags = struct.unpack_from("<I", self.data, start + 36)[0]
            self.sections.append((self.data[start:start + 8].rstrip(b"\0").decode(), address, max(size, raw_size), raw,
                                  flags))

    def section_of(self, address):
        for section in self.sections:
            if section[1] <= address < section[1] + section[2]:
                return section
        raise SystemExit(f"{self.path}: nothing is at {address:#x}")

    def bytes_at(self, address, size):
        section = self.section_of(address)
        start = section[3] + address - section[1]
        return self.data[start:start + size]


def exports_of(objdump, path):
    text = output_of(objdump, "-p", path)
    table = text.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    return re.findall(r"^\s*\[ *\d+\]\s+(?:\+base\[ *\d+\]\s+)?(?:[0-9a-f]{4} )?(\S+)$", table, re.M)


def imports_of(objdump, path):
    return set(re.findall(r"DLL Name: (\S+)", output_of(objdump, "-p", path)))


def protection_problems(image):
    if image.machine != 0x8664:
        yield "is not for 64-bit Windows"
    for name, bit in CHARACTERISTICS.items():
        if not image.characteristics & bit:
            yield f"lacks {name}"
    if image.base_relocations == 0:
        yield "cannot be moved: it has no relocations"
    for name, _, _, _, flags in image.sections:
        if flags & EXECUTABLE and flags & 0x80000000:
            yield f"section {name} can be written and executed"


def run_time_fix_ups(nm, image):
    """What the start-up code writes addresses of other libraries' data into."""
    symbols = {}
    for line in output_of(nm, image.path).splitlines():
        parts = line.split()
        if len(parts) == 3 and "RUNTIME_PSEUDO_RELOC_LIST" in parts[2]:
            symbols[parts[2].strip("_")] = int(parts[0], 16) - image.base
    try:
        start, end = symbols["RUNTIME_PSEUDO_RELOC_LIST"], symbols["RUNTIME_PSEUDO_RELOC_LIST_END"]
    except KeyError:
        raise SystemExit(f"{image.path}: no list of fix-ups; is it stripped?") from None
    if start == end:
        return []
    if image.bytes_at(start, 12) != struct.pack("<III", 0, 0, 1):
        raise SystemExit(f"{image.path}: an unknown kind of fix-ups")
    return [struct.unpack("<III", image.bytes_at(at, 12))[1] for at in range(start + 12, end, 12)]


def fix_up_problems(nm, image):
    for target in run_time_fix_ups(nm, image):
        name, _, _, _, flags = image.section_of(target)
        if flags & EXECUTABLE:
            yield f"has a fix-up at run time in {name}"


def version_problems(image, version):
    numbers = [int(part) for part in version.split(".")]
    start = image.data.find(struct.pack("<I", 0xFEEF04BD))
    if start < 0:
        yield "has no version resource"
        return
    high, low = struct.unpack_from("<II", image.data, start + 8)
    if [high >> 16, high & 0xFFFF, low >> 16] != numbers:
        yield "has another version in its resource"
    for text in (version, Path(image.path).name, "ZVGRLibGenTL", "All rights reserved."):
        if text.encode("utf-16-le") not in image.data:
            yield f"does not name {text} in its resource"


def import_problems(objdump, path, own):
    imported = imports_of(objdump, path)
    known = {name.lower() for name in SYSTEM_LIBRARIES | RUN_TIME_LIBRARIES | OWN_LIBRARIES}
    for name in sorted(imported):
        if name.lower() not in known:
            yield f"needs {name}"
    for name in sorted(own - imported):
        yield f"does not need {name}"


def set_problems(expected, found):
    for name in sorted(set(expected) ^ set(found)):
        yield f"{name} is {'not exported' if name in expected else 'exported, but not declared'}"
    if len(found) != len(set(found)):
        yield "exports a name twice"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("objdump", "nm", "version", "list", "producer", "grabber-header", "grabber-library", "logger-library"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("programs", nargs="*")
    options = parser.parse_args()
    objdump, nm = options.objdump, options.nm

    shipped = [(options.producer, OWN_LIBRARIES), (options.grabber_library, {"ZVLogger.dll"}),
               (options.logger_library, set())] + [(program, set()) for program in options.programs]
    problems = []
    for path, own in shipped:
        image = Image(path)
        found = [*protection_problems(image), *fix_up_problems(nm, image), *version_problems(image, options.version),
                 *import_problems(objdump, path, own)]
        problems += [f"{path}: {problem}" for problem in found]

    problems += set_problems(listed_functions(options.list), exports_of(objdump, options.producer))
    problems += set_problems(grabber_functions(options.grabber_header), exports_of(objdump, options.grabber_library))
    names = exports_of(objdump, options.logger_library)
    demangled = output_of("c++filt", *names).splitlines() if names else []
    if "InitLogger" not in names or "ZVTimeElapsedUs" not in names:
        problems.append(f"{options.logger_library}: its functions are not exported")
    problems += [f"{options.logger_library}: {name} is exported" for name in demangled
                 if not re.fullmatch(LOGGER_SYMBOLS, name.removeprefix("non-virtual thunk to "))]
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
