"""Tests of what the checks read out of C++ text, the export list and the table of seeded defects."""

import subprocess
import tempfile
import unittest
from pathlib import Path

import exports
import log_lines
import seeded_defects
from cpp_source import call_sites, sum_pattern, without_comments


def sites(text, name="api/File.cpp"):
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return call_sites(path)


def described(text, name="api/File.cpp"):
    return [(s.unit, s.number, s.function, s.priorities, s.pattern) for s in sites(text, name)]


class CallSites(unittest.TestCase):
    def test_of_an_exported_call(self):
        text = """
            const ApiCall call{"DSGetInfo", Priority::debug};
            call.log(At{1}, "Enter, info=%d, "
                            "size=%d", f(a, b), c);
            if (!call.library_is_open(At{2}))
                return x;
            call.record_error(At{3}, "index " + std::to_string(i) + ", 100%");
            return ok ? call.succeed(At{4}, "Exit") : call.fail(At{5}, GC_ERR_INVALID_ID);"""
        unit, function = "ZVGRLibGenTL", "DSGetInfo"
        self.assertEqual(described(text), [
            (unit, 1, function, ("debug",), "Enter, info=%d, size=%d"),
            (unit, 2, function, ("error",), "No preceding call to GCInitLib"),
            (unit, 3, function, ("error",), "index %s, 100%%"),
            (unit, 4, function, ("debug",), "Exit"),
            (unit, 5, function, ("error",), "Exit, Returning error GC_ERR_INVALID_ID (0x%X)"),
        ])

    def test_of_a_module(self):
        text = 'log_warning(stream_module_logger, "StreamModule::connect", At{7}, "x%" PRIu64 "y", n);'
        self.assertEqual(described(text, "modules/StreamModule_delivery.cpp"),
                         [("StreamModule", 7, "StreamModule::connect", ("warning",), "x%lluy")])

    def test_of_a_timer(self):
        text = 'const ScopeTimer timer{api_logger, "IFOpenDevice", At{2386}, Priority::information};'
        self.assertEqual(described(text),
                         [("ZVGRLibGenTL", 2386, "IFOpenDevice", ("information",), "duration: %lld usec")])

    def test_of_a_helper_leaves_the_caller_open(self):
        text = 'void check(const ApiCall& call) { call.log_info(At{310}, "%s - bad", call.function()); }'
        self.assertEqual(described(text), [("ZVGRLibGenTL", 310, None, ("information",), "%s - bad")])

    def test_of_a_named_text(self):
        text = 'constexpr const char* format = "a=%s"; log_error(api_logger, "f", At{1}, format, b);'
        self.assertEqual(described(text)[0][4], "a=%s")

    def test_of_two_numbers_in_one_call(self):
        text = 'const ApiCall call{"IFGetInfo"}; return output.refuse(call, At{1}, At{2}, command);'
        self.assertEqual([s[4] for s in described(text)],
                         ["info= %d", "Exit, Returning error GC_ERR_NOT_IMPLEMENTED (0x%X)"])

    def test_leave_comments_out(self):
        self.assertEqual(sites('/* At{1} */ // At{2}\nconst char* text = "At{3}";'), [])

    def test_know_their_lines(self):
        self.assertEqual([s.line for s in sites('\n/* \n */ log_error(l, "f",\n At{1}, "x");')], [4])


class Texts(unittest.TestCase):
    def test_comments_go_and_lines_stay(self):
        self.assertEqual(without_comments('a /* b\nc */ "// d" // e\nf'), 'a     \n     "// d"     \nf')

    def test_sums_become_patterns(self):
        self.assertEqual(sum_pattern('std::string("a ") + f("+") + g'), "a %s")


class Table(unittest.TestCase):
    SOURCE = 'const ApiCall call{"f"}; call.log(At{1}, "Enter f");'

    def problems(self, row):
        found = {(s.unit, s.number): s for s in sites(self.SOURCE)}
        return list(log_lines.problems(row, found))

    def test_that_agrees_is_accepted(self):
        self.assertEqual(self.problems({("ZVGRLibGenTL", 1): ("f", ("information",), "Enter f")}), [])

    def test_that_differs_is_rejected(self):
        for row in (("g", ("information",), "Enter f"), ("f", ("debug",), "Enter f"),
                    ("f", ("information",), "Enter g")):
            self.assertEqual(len(self.problems({("ZVGRLibGenTL", 1): row})), 1)
        self.assertEqual(len(self.problems({})), 1)

    def test_with_a_row_too_many_is_rejected(self):
        rows = {("ZVGRLibGenTL", n): ("f", ("information",), "Enter f") for n in (1, 2)}
        self.assertEqual(len(self.problems(rows)), 1)


class ExportList(unittest.TestCase):
    def test_must_name_what_the_header_declares(self):
        with tempfile.TemporaryDirectory() as folder:
            header = Path(folder) / "GenTL.h"
            header.write_text("".join(f"GC_API Function{n}(void);\n" for n in range(exports.FUNCTIONS)))
            names = [f"Function{n}" for n in range(exports.FUNCTIONS)]
            self.assertEqual(list(exports.list_problems(header, names)), [])
            self.assertEqual(len(list(exports.list_problems(header, names[1:]))), 1)
            self.assertEqual(len(list(exports.list_problems(header, names + ["Other"]))), 1)
            self.assertEqual(len(list(exports.list_problems(header, names + names[:1]))), 1)

    def test_reads_the_grabber_header(self):
        with tempfile.TemporaryDirectory() as folder:
            header = Path(folder) / "ZVGRLib.h"
            header.write_text("ZVGR_API uint32_t ZVGR_CALL ZVGR_Open(uint32_t index);\n"
                              "ZVGR_API const char* ZVGR_CALL ZV_Name(\n    uint32_t index);\n")
            self.assertEqual(exports.grabber_functions(header), {"ZVGR_Open", "ZV_Name"})


class SeededDefects(unittest.TestCase):
    TEXT = "if (a) // why\n    return  b;\nreturn b;\n"

    def defect(self, before, after="", **more):
        return seeded_defects.Defect(**{"id": "d", "kind": "wrong code", "file": "src/a.cpp", "before": before,
                                        "after": after, **more})

    def problems(self, *defects):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "src").mkdir()
            (Path(folder) / "src/a.cpp").write_text(self.TEXT)
            return list(seeded_defects.table_problems(defects, folder))

    def test_are_found_whatever_comments_and_white_space_are(self):
        defect = self.defect("if (a)\n  return b;", "return c;")
        self.assertEqual(defect.applied_to(self.TEXT), "return c;\nreturn b;\n")

    def test_that_apply_once_are_accepted(self):
        self.assertEqual(self.problems(self.defect("if (a)")), [])

    def test_that_do_not_apply_once_are_rejected(self):
        for before in ("return b;", "return c;", "why"):
            self.assertEqual(len(self.problems(self.defect(before))), 1)

    def test_that_make_no_sense_are_rejected(self):
        for defect in (self.defect("if (a)", "if  (a)"), self.defect("if (a)", kind="other"),
                       self.defect("if (a)", file="src/b.cpp"), self.defect("if (a)", file="tests/a.cpp")):
            self.assertEqual(len(self.problems(defect)), 1)
        self.assertEqual(len(self.problems(self.defect("if (a)"), self.defect("(a)"))), 1)

    def test_that_survive_fail_the_run(self):
        results = [seeded_defects.Result("a", "wrong code", "src/a.cpp", outcome) for outcome in
                   (seeded_defects.CAUGHT, seeded_defects.TIMED_OUT)]
        self.assertEqual(seeded_defects.verdict_of(results)[1], 0)
        results.append(seeded_defects.Result("b", "wrong code", "src/a.cpp", seeded_defects.DOES_NOT_COMPILE))
        self.assertEqual(seeded_defects.verdict_of(results)[1], 2)
        results.append(seeded_defects.Result("c", "wrong code", "src/a.cpp"))
        self.assertEqual(seeded_defects.verdict_of(results)[1], 1)


class StagesForAChange(unittest.TestCase):
    ROWS = [
        (["docs/testing.md"], "release"),
        (["src/api/ApiCall.cpp"], "release asan tsan coverage lint"),
        (["include/zvgr/ZVGRLib.h"], "release asan tsan coverage"),
        (["simulator/Stream.cpp"], "release asan tsan lint"),
        (["genapi/src/types.cpp"], "release asan tsan lint"),
        (["tools/zvgentl/commands/get.cpp"], "release asan lint"),
        (["tests/unit/tools/Port_test.cpp"], "release asan"),
        (["tests/api/DS_queue_test.cpp"], "release asan tsan coverage"),
        (["platform/win32/process.cpp"], "release windows asan tsan coverage lint"),
        (["tests/CMakeLists.txt"], "release windows packages"),
        (["tests/packages/check_zip.sh"], "release packages"),
        (["docs/testing.md", "scripts/wine.sh", "logger/Notices.h"], "release windows asan tsan lint"),
    ]

    def test_are_those_that_can_notice_it(self):
        script = Path(__file__).resolve().parents[2] / "scripts/test.sh"
        for files, expected in self.ROWS:
            with self.subTest(files=files):
                planned = subprocess.run(["bash", script, "--plan", *files], capture_output=True, text=True, check=True)
                self.assertEqual(planned.stdout.split(), expected.split())


if __name__ == "__main__":
    unittest.main()
