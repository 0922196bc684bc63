"""What the checks know about C++ text: comments, strings, brackets, log call sites."""

import re
from dataclasses import dataclass
from pathlib import Path

CPP_SUFFIXES = {".c", ".cpp", ".h", ".hpp"}

LOGGERS = {
    "api_logger": "ZVGRLibGenTL",
    "system_module_logger": "SystemModule",
    "buffer_module_logger": "BufferModule",
    "camera_module_logger": "CameraModule",
    "event_module_logger": "EventModule",
    "stream_module_logger": "StreamModule",
}
API_UNIT = "ZVGRLibGenTL"
PRIORITIES = ("fatal", "error", "warning", "information", "debug", "trace")


def cpp_files(folder):
    return sorted(p for p in Path(folder).rglob("*") if p.suffix in CPP_SUFFIXES and p.is_file())


def without_comments(text):
    """The text with comments blanked out; offsets and line numbers stay as they are."""
    pattern = re.compile(r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'|//[^\n]*|/\*.*?\*/', re.S)

    def blank(match):
        token = match.group(0)
        return token if token[0] in "\"'" else re.sub(r"[^\n]", " ", token)

    return pattern.sub(blank, text)


def without_strings(text):
    """Comment-free text with the inside of strings blanked out."""
    return re.sub(r'"((?:\\.|[^"\\\n])*)"', lambda m: '"' + " " * len(m.group(1)) + '"', text)


def line_of(text, offset):
    return text.count("\n", 0, offset) + 1


def enclosing_bracket(shape, offset):
    """Offset of the bracket that is open at `offset`, or -1. `shape` has no strings."""
    depth = 0
    for i in range(offset - 1, -1, -1):
        if shape[i] in ")}]":
            depth += 1
        elif shape[i] in "({[":
            if depth == 0:
                return i
            depth -= 1
    return -1


def arguments(text, shape, opening):
    """The texts between the bracket at `opening` and its partner, split at commas of that level."""
    parts, depth, start = [], 0, opening + 1
    for i in range(opening, len(shape)):
        character = shape[i]
        if character in "({[":
            depth += 1
        elif character in ")}]":
            depth -= 1
            if depth == 0:
                parts.append(text[start:i].strip())
                return parts
        elif character == "," and depth == 1:
            parts.append(text[start:i].strip())
            start = i + 1
    return parts


@dataclass
class Site:
    """A log call: what it writes, as far as the source says. None where it does not."""

    path: Path
    line: int
    offset: int
    unit: str
    number: int
    function: str | None = None
    priorities: tuple | None = None
    pattern: str | None = None

    @property
    def place(self):
        return f"{self.path}:{self.line}"


FORMAT_MACROS = {"PRIu64": "llu", "PRId64": "lld", "PRIx64": "llx", "PRIX64": "llX", "PRIu32": "u",
                 "PRId32": "d", "PRIx32": "x", "PRIX32": "X"}


def literal(expression):
    """The text of adjacent string literals, or None if the expression is anything else."""
    rest, text = expression.strip(), ""
    while rest:
        string = re.match(r'"((?:\\.|[^"\\])*)"\s*', rest)
        macro = re.match(r"(PRI\w+)\s*", rest)
        if string:
            text += re.sub(r"\\(.)", r"\1", string.group(1))
            rest = rest[string.end():]
        elif macro and macro.group(1) in FORMAT_MACROS:
            text += FORMAT_MACROS[macro.group(1)]
            rest = rest[macro.end():]
        else:
            return None
    return text


def literal_or_named(expression, text, before):
    """The same, where the expression may also be the name of a constant text defined above."""
    found = literal(expression)
    if found is not None or not re.fullmatch(r"\w+", expression.strip()):
        return found
    definitions = list(re.finditer(r"\bconst\s+char\s*\*\s*(?:const\s+)?" + expression.strip()
                                   + r"\s*=\s*([^;]*);", text[:before]))
    return literal(definitions[-1].group(1)) if definitions else None


def sum_pattern(expression):
    """A pattern for a text put together with '+': literals as they are, everything else as %s."""
    shape = without_strings(expression)
    parts, depth, start = [], 0, 0
    for i, character in enumerate(shape):
        if character in "({[":
            depth += 1
        elif character in ")}]":
            depth -= 1
        elif character == "+" and depth == 0:
            parts.append(expression[start:i])
            start = i + 1
    parts.append(expression[start:])
    pattern = ""
    for part in parts:
        inner = re.fullmatch(r"\s*std::string[({](.*)[)}]\s*", part, re.S)
        text = literal(inner.group(1) if inner else part)
        pattern += "%s" if text is None else text.replace("%", "%%")
    return re.sub(r"(%s)+", "%s", pattern)


def code_pattern(expression):
    code = expression.strip().split("::")[-1]
    return f"Exit, Returning error {code} (0x%X)" if code.startswith("GC_ERR_") else (
        "Exit, Returning error %s (0x%X)")


def call_context(text, before, variable):
    """Function name and priorities of the ApiCall named `variable` that is in scope at offset `before`."""
    scope = text[:before]
    made = list(re.finditer(r"\bApiCall\s+" + variable + r"\s*[{(](.*?)[})]\s*;", scope, re.S))
    passed = list(re.finditer(r"\bApiCall\s*&\s*" + variable + r"\b", scope))
    if passed and (not made or passed[-1].start() > made[-1].start()):
        return None, None  # the caller's: the table may say whose
    if not made:
        return None, None
    parts = [p.strip() for p in made[-1].group(1).split(",", 1)]
    name = literal(parts[0])
    if len(parts) == 1:
        return name, ("information",)
    level = re.fullmatch(r"(?:zvgentl::)?Priority::(\w+)", parts[1])
    return name, (level.group(1),) if level else None


def describe(site, text, callee, given, position):
    """Fills in what the call at hand writes. `given` are its arguments, `position` that of the At."""
    method = re.search(r"(\w+)\s*(?:\.|->)\s*(\w+)\s*$", callee)
    plain = re.search(r"(?:^|[^.\w>])(log_\w+|write_line|write_bare_line)\s*$", callee)
    timer = re.search(r"\bScopeTimer\s+\w+\s*$", callee)
    if timer and position == 2:
        site.function, site.pattern = literal(given[1]), "duration: %lld usec"
        level = re.fullmatch(r"(?:zvgentl::)?Priority::(\w+)", given[3])
        site.priorities = (level.group(1),) if level else None
        site.unit = LOGGERS.get(given[0], site.unit)
    elif plain and plain.group(1).startswith("log_") and position == 2:
        site.unit = LOGGERS.get(given[0], site.unit)
        site.function = literal(given[1])
        site.priorities = (plain.group(1)[len("log_"):],)
        site.pattern = literal_or_named(given[3], text, site.offset)
    elif plain and plain.group(1) == "write_line" and position == 3:
        site.unit = LOGGERS.get(given[0], site.unit)
        site.function = literal(given[2])
        site.pattern = literal(given[4])
    elif method:
        describe_method(site, text, method.group(1), method.group(2), given, position)
    elif position + 1 < len(given):
        site.pattern = literal(given[position + 1])  # a helper: the text follows the number by convention


def describe_method(site, text, variable, name, given, position):
    if name == "refuse":
        site.function, _ = call_context(text, site.offset, given[0])
        site.priorities = ("error",)
        site.pattern = "info= %d" if position == 1 else code_pattern("GC_ERR_NOT_IMPLEMENTED")
        return
    site.function, traffic = call_context(text, site.offset, variable)
    rest = given[position + 1:]
    if name in ("log", "succeed") and rest:
        site.priorities, site.pattern = traffic, literal_or_named(rest[0], text, site.offset)
    elif name in ("log_info", "log_error", "log_warning") and rest:
        site.priorities = ({"log_info": "information"}.get(name, name[len("log_"):]),)
        site.pattern = literal_or_named(rest[0], text, site.offset)
    elif name == "fail" and rest:
        site.priorities, site.pattern = ("error",), code_pattern(rest[0])
    elif name == "library_is_open":
        site.priorities, site.pattern = ("error",), "No preceding call to GCInitLib"
    elif name == "record_error" and rest:
        site.priorities, site.pattern = ("error",), sum_pattern(rest[0])


def unit_of_file(path):
    parts = Path(path).parts
    if "api" in parts or "port" in parts:
        return API_UNIT
    return Path(path).stem.split("_")[0]


def call_sites(path):
    """Every `At{number}` of a file, in order."""
    text = without_comments(Path(path).read_text())
    shape = without_strings(text)
    sites = []
    for match in re.finditer(r"\bAt\s*\{\s*(\d+)\s*\}", shape):
        site = Site(Path(path), line_of(text, match.start()), match.start(), unit_of_file(path), int(match.group(1)))
        opening = enclosing_bracket(shape, match.start())
        if opening >= 0:
            given = arguments(text, shape, opening)
            positions = [i for i, g in enumerate(given)
                         if re.fullmatch(r"(?:zvgentl::)?At\s*\{\s*%d\s*\}" % site.number, g)]
            if positions:
                describe(site, text, text[max(0, opening - 120):opening], given, positions[0])
        sites.append(site)
    return sites


def odd_sites(path):
    """Places that make an At in any other way than from a number, as (line, text)."""
    text = without_strings(without_comments(Path(path).read_text()))
    odd = []
    for match in re.finditer(r"(?<!struct )\bAt\s*[({][^)}]*[)}]", text):
        if not re.fullmatch(r"At\s*\{\s*\d+\s*\}", match.group(0)):
            odd.append((line_of(text, match.start()), match.group(0)))
    for match in re.finditer(r"__LINE__|__func__|__FUNCTION__|__COUNTER__", text):
        odd.append((line_of(text, match.start()), match.group(0)))
    return odd
