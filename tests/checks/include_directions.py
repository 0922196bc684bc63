"""Rejects every #include that points the wrong way.

Dependencies go api -> port -> modules -> log, resources -> platform; of the producer, only src/log knows Poco. Only
platform knows the operating system. The rest of the tree sees the producer through its interfaces.
"""

import argparse
import re
import sys
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

from cpp_source import cpp_files, line_of, without_comments

STANDARD = set("""
algorithm any array atomic bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits clocale cmath
codecvt complex condition_variable csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar
cwctype deque exception execution filesystem forward_list fstream functional future initializer_list iomanip ios iosfwd
iostream istream iterator limits list locale map memory memory_resource mutex new numeric optional ostream queue random
ratio regex scoped_allocator set shared_mutex sstream stack stdexcept streambuf string string_view system_error thread
tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector
assert.h ctype.h errno.h inttypes.h limits.h stdalign.h stdarg.h stdatomic.h stdbool.h stddef.h stdint.h stdio.h
stdlib.h string.h time.h
""".split())

COMPILER = r"sanitizer/.*"
POCO = r"Poco/.*"
GTEST = r"g(test|mock)/.*"
PICTURES = r"png\.h|tiffio\.h"
SYSTEM = r".*"  # operating-system headers have no common pattern


@dataclass
class Rule:
    """What the files of one folder may include beside the standard library and that folder itself."""

    folder: str
    tree: tuple = ()  # folders or files of this repository
    external: tuple = ()  # patterns of other headers
    knows_system: bool = False
    extra: dict = field(default_factory=dict)  # file name -> more external patterns


SRC = ("platform", "src/log", "src/resources", "src/modules", "src/port", "src/api")
INTERFACES = ("include/GenTL", "include/zvgr", "include/zvlog")

# The longest folder that holds a file decides.
RULES = [
    Rule("include/GenTL"),
    Rule("include/zvgr"),
    Rule("include/zvlog", extra={"ZVLogger.h": (POCO,)}),
    Rule("platform", extra={"copy.cpp": (r"cpuid\.h", r"immintrin\.h")}),  # the processor's own
    Rule("platform/posix", ("platform",), (SYSTEM,), knows_system=True),
    Rule("platform/win32", ("platform",), (SYSTEM,), knows_system=True),
    Rule("src/log", ("platform", "include/zvlog"), (POCO,)),
    Rule("src/resources"),
    Rule("src/modules", ("src/log", "platform", "src/resources", "include/zvgr", "include/zvlog/ZVSettings.h",
                         "include/GenTL"), (COMPILER,)),
    Rule("src/port", ("src/modules", "src/log", "include/zvgr", "include/GenTL")),
    Rule("src/api", SRC + ("include/GenTL",)),
    Rule("simulator", ("platform", "include/zvgr", "include/zvlog"), (PICTURES, r"yaml-cpp/.*")),
    Rule("logger", ("platform", "include/zvlog"), (POCO,)),
    Rule("tools", ("platform", "include/GenTL", "include/zvgr/FrameStamp.h", "include/zvlog/ZVReports.h"),
         (PICTURES, r"fmt/core\.h", r"zip\.h"),
         extra={"CommandLine.cpp": (r"CLI/.*",), "Json.cpp": (r"nlohmann/.*",)}),  # slow to compile: one source each
    Rule("tools/genapi", ("tools/gentl", "genapi/include")),
    Rule("genapi/include"),
    Rule("genapi/src/description", ("genapi/include",), (r"libxml/.*", r"zip\.h")),
    Rule("genapi/src/formula"),
    Rule("genapi/src", ("genapi/include",)),
    Rule("examples", ("include/GenTL", "genapi/include"), (SYSTEM,), knows_system=True),
    Rule("tests/support", SRC + INTERFACES, (GTEST, POCO)),
    Rule("tests/support/process", (), (SYSTEM,), knows_system=True),
    Rule("tests/support/win32", (), (SYSTEM,), knows_system=True),
    Rule("tests/unit", SRC + INTERFACES + ("tests/support",), (GTEST, POCO, COMPILER)),
    Rule("tests/unit/platform/posix", ("platform",), (GTEST, SYSTEM), knows_system=True),
    Rule("tests/unit/support", SRC + INTERFACES + ("tests/support",), (GTEST, POCO)),
    Rule("tests/unit/resources", ("src/resources",), (GTEST, r"zip\.h")),
    Rule("tests/unit/logger", ("logger", "platform", "include/zvlog", "tests/support"), (GTEST, POCO, SYSTEM),
         knows_system=True),
    Rule("tests/unit/simulator", ("simulator", "include/zvgr", "include/zvlog", "tests/support"),
         (GTEST, PICTURES, SYSTEM), knows_system=True),
    Rule("tests/unit/tools", ("tools", "platform", "include/GenTL", "include/zvgr/FrameStamp.h", "tests/support"),
         (GTEST, PICTURES, SYSTEM), knows_system=True),
    Rule("tests/unit/genapi", ("genapi",), (GTEST, r"zip\.h")),
    Rule("tests/fuzz", ("genapi", "tests/unit/genapi")),
    Rule("tests/genapi_differential", ("genapi",), (GTEST, r"arv\.h")),
    Rule("tests/api", ("include/GenTL", "tests/support"), (GTEST,)),
    Rule("tests/system", ("include/GenTL", "include/zvgr/FrameStamp.h", "tests/support/process"), (GTEST, SYSTEM),
         knows_system=True),
    Rule("tests/system/consumers", ("tools", "platform", "tests/system", "include/GenTL", "include/zvgr/FrameStamp.h"),
         (r"libxml/.*",)),
    Rule("tests/system/tools", ("tools", "platform", "tests/unit/tools", "tests/system", "include/GenTL",
                                "include/zvgr/FrameStamp.h"),
         (GTEST, PICTURES, SYSTEM, r"nlohmann/.*"), knows_system=True),
    Rule("tests/hostile", ("tools", "simulator", "logger", "platform")),
    Rule("tests/packages", (), (SYSTEM,), knows_system=True),
    Rule("tests/checks", INTERFACES, (GTEST,)),
    Rule("benchmarks", ("include/GenTL", "include/zvgr", "genapi/include", "tests/system"), (SYSTEM,), knows_system=True),
    Rule("benchmarks/log_line", ("src/log",)),
]

# Only platform asks for the operating system on behalf of these.
PORTABLE = ("platform", "genapi", "src", "logger", "simulator", "tools")
ROOTS = ("include", "genapi/include", "genapi/src", "src", "", "tests", "tools", "benchmarks", "tests/system")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(["<])([^">\n]+)[">]', re.M)
SYSTEM_TEST = re.compile(r"^[ \t]*#[ \t]*(?:if|ifdef|ifndef|elif)\b[^\n]*\b(?:_WIN32|_WIN64|__linux__|__unix__|__APPLE__)\b",
                         re.M)


def is_below(path, folder):
    return path == folder or path.startswith(folder + "/")


def rule_for(path):
    fitting = [rule for rule in RULES if is_below(path, rule.folder)]
    return max(fitting, key=lambda rule: len(rule.folder)) if fitting else None


def resolve(root, path, name):
    """The included file as a path below the root, or None if the tree has no such file."""
    candidates = [Path(path).parent / name] + [Path(start) / name for start in ROOTS]
    for candidate in candidates:
        if (root / candidate).is_file():
            return (root / candidate).resolve().relative_to(root.resolve()).as_posix()
    return None


def objection(rule, path, target, quoted, name):
    if target is not None:
        if is_below(target, rule.folder) or any(is_below(target, folder) for folder in rule.tree):
            return None
        return f"{rule.folder} may not include {target}"
    if quoted == '"':
        return f"there is no {name}"
    patterns = rule.external + rule.extra.get(Path(path).name, ())
    if name in STANDARD or any(re.fullmatch(pattern, name) for pattern in patterns):
        return None
    return f"{rule.folder} may not include <{name}>"


def check_file(root, path):
    rule = rule_for(path)
    if rule is None:
        yield f"{path}: no rule says what this folder may include"
        return
    text = without_comments((root / path).read_text())
    for match in INCLUDE.finditer(text):
        quoted, name = match.groups()
        found = objection(rule, path, resolve(root, path, name), quoted, name)
        if found:
            yield f"{path}:{line_of(text, match.start())}: {found}"
    if path.split("/")[0] in PORTABLE and not rule.knows_system:
        for match in SYSTEM_TEST.finditer(text):
            yield f"{path}:{line_of(text, match.start())}: only the folders in platform may ask for the operating system"


def check(root, paths=None):
    root = Path(root)
    if paths is None:
        folders = sorted({rule.folder.split("/")[0] for rule in RULES})
        paths = [p.relative_to(root).as_posix() for f in folders if (root / f).is_dir() for p in cpp_files(root / f)]
    for path in paths:
        yield from check_file(root, path)


# file, its text, whether it must be rejected
SELF_TESTS = [
    ("src/modules/A.cpp", '#include "log/Log.h"\n#include <vector>\n', False),
    ("src/modules/A.cpp", '#include "api/ApiCall.h"\n', True),
    ("src/modules/A.cpp", '#include "port/Routing.h"\n', True),
    ("src/modules/A.cpp", "#include <Poco/Logger.h>\n", True),
    ("src/modules/A.cpp", '#include "zvlog/ZVLogger.h"\n', True),
    ("src/modules/A.cpp", '#include "zvlog/ZVSettings.h"\n', False),
    ("src/modules/A.cpp", "#include <unistd.h>\n", True),
    ("src/modules/A.cpp", "#ifdef _WIN32\n#endif\n", True),
    ("src/modules/A.cpp", '// #include "api/ApiCall.h"\n', False),
    ("src/modules/A.cpp", '#include "nowhere/Missing.h"\n', True),
    ("src/log/A.cpp", "#include <Poco/Logger.h>\n", False),
    ("src/log/A.cpp", '#include "modules/A.h"\n', True),
    ("platform/A.h", "#include <windows.h>\n", True),
    ("platform/A.h", "#ifdef _WIN32\n#endif\n", True),
    ("platform/posix/A.cpp", '#include <unistd.h>\n#include "platform/A.h"\n', False),
    ("platform/posix/A.cpp", '#include "log/Log.h"\n', True),
    ("src/log/A.cpp", '#include "platform/A.h"\n', False),
    ("src/resources/A.h", '#include "platform/A.h"\n', True),
    ("logger/A.cpp", '#include "platform/A.h"\n', False),
    ("logger/A.cpp", "#include <unistd.h>\n", True),
    ("simulator/A.cpp", "#ifdef _WIN32\n#endif\n", True),
    ("tools/A.cpp", '#include "platform/A.h"\n', False),
    ("src/port/A.cpp", '#include "api/ApiCall.h"\n', True),
    ("src/api/A.cpp", '#include "port/Routing.h"\n', False),
    ("src/api/A.cpp", '#include "zvgr/ZVGRLib.h"\n', True),
    ("src/resources/A.h", '#include "log/Log.h"\n', True),
    ("include/GenTL/A.h", '#include "zvgr/ZVGRLib.h"\n', True),
    ("simulator/A.cpp", '#include "log/Log.h"\n', True),
    ("tools/A.cpp", '#include "zvgr/ZVGRLib.h"\n', True),
    ("tests/api/A.cpp", '#include "modules/A.h"\n', True),
    ("tests/api/A.cpp", '#include "GenTL/GenTL.h"\n', False),
    ("tests/system/A.cpp", '#include "support/fixtures.h"\n', True),
]
SELF_TEST_FILES = ["src/log/Log.h", "src/api/ApiCall.h", "src/port/Routing.h", "src/modules/A.h", "platform/A.h",
                   "include/zvlog/ZVLogger.h", "include/zvlog/ZVSettings.h", "include/zvgr/ZVGRLib.h",
                   "include/GenTL/GenTL.h", "tests/support/fixtures.h"]


def self_test():
    for path, text, is_bad in SELF_TESTS:
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            for name in SELF_TEST_FILES:
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text("")
            (root / path).parent.mkdir(parents=True, exist_ok=True)
            (root / path).write_text(text)
            if bool(list(check_file(root, path))) != is_bad:
                yield f"self-test: {path} with {text!r} was {'accepted' if is_bad else 'rejected'}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("root", nargs="?", help="the repository")
    parser.add_argument("files", nargs="*", help="only these, relative to the repository")
    parser.add_argument("--self-test", action="store_true")
    options = parser.parse_args()
    if options.self_test:
        problems = list(self_test())
    else:
        wanted = [f for f in options.files if rule_for(f) or f.split("/")[0] in ("src", "include")]
        problems = list(check(options.root, wanted if options.files else None))
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
