"""The include check reports what goes against the rules, and only that, in trees made for it."""

import pathlib
import tempfile
import unittest

import check_includes


def tree(folder, files):
    """The root of a tree of these files, a mapping of path to text, made in `folder`."""
    root = pathlib.Path(folder)
    for path, text in files.items():
        (root / path).parent.mkdir(parents=True, exist_ok=True)
        (root / path).write_text(text)
    return root


class CheckIncludes(unittest.TestCase):
    def reports(self, files):
        """What is reported in a tree of these files, a mapping of path to text."""
        with tempfile.TemporaryDirectory() as folder:
            return check_includes.check(tree(folder, files))[0]

    def refused(self, path, include, why):
        reports = self.reports({path: f"// A source.\n#include {include}\n"})
        self.assertEqual(reports, [f"{path}:2: {include[1:-1]}: {why}"])

    def admitted(self, path, include):
        self.assertEqual(self.reports({path: f"#include {include}\n"}), [])

    def test_the_libraries_know_what_is_below_them(self):
        self.admitted("solver/a.cpp", '"Klikro/matrix"')
        self.admitted("survival/cox/a.cpp", '"solver/solver.h"')
        self.admitted("survival/cox/a.cpp", '"Dist/Dist"')
        self.admitted("survival/cox/a.cpp", '"survival/SortApply.h"')
        for library in ("Dist", "Klikro", "solver", "survival"):
            self.admitted(f"{library}/a.cpp", '"numerics/sum.h"')

    def test_a_library_does_not_know_its_neighbours_or_what_is_above(self):
        self.refused("Klikro/a.cpp", '"Dist/Dist"', "Klikro does not know Dist")
        self.refused("Klikro/a.cpp", '"solver/solver.h"', "Klikro does not know solver")
        self.refused("Dist/a.cpp", '"Klikro/matrix"', "Dist does not know Klikro")
        self.refused("solver/a.cpp", '"Dist/Dist"', "solver does not know Dist")
        self.refused("survival/a.cpp", '"analysis/table.h"', "survival does not know analysis")
        self.refused("survival/a.cpp", "<analysis/table.h>", "survival does not know analysis")
        self.refused("survival/a.cpp", '"engine/input.h"', "survival does not know engine")

    def test_a_header_without_a_suffix_is_read_too(self):
        self.refused("Klikro/matrix", '"survival/survival.h"', "Klikro does not know survival")

    def test_what_is_statistics_uses_the_standard_library_only(self):
        self.admitted("Dist/a.cpp", "<cmath>")
        self.admitted("survival/calls/a.h", "<wchar.h>")
        for folder in ("numerics", "Dist", "Klikro", "solver", "survival", "engine", "model",
                       "procedures"):
            why = f"{folder} uses nothing but the standard library"
            self.refused(f"{folder}/a.cpp", "<boost/math/distributions.hpp>", why)
            self.refused(f"{folder}/a.cpp", "<unistd.h>", why)
        self.refused("survival/a.cpp", '"tests/support/near.h"', "survival does not know tests")

    def test_numerics_knows_nobody(self):
        for include in ("Dist/Dist", "Klikro/matrix", "engine/input.h", "frame/frame.h"):
            self.refused("numerics/a.cpp", f'"{include}"',
                         f"numerics does not know {include.split('/')[0]}")

    def test_a_header_of_the_system_is_for_the_one_file_that_needs_it(self):
        self.admitted("numerics/largeArray.cpp", "<sys/mman.h>")
        for path, include in (("numerics/a.cpp", "<sys/mman.h>"),
                              ("numerics/largeArray.cpp", "<sys/resource.h>")):
            self.refused(path, include, "numerics uses nothing but the standard library")

    def test_the_engine_knows_numerics_and_the_distributions(self):
        for include in ("numerics/sum.h", "Dist/Dist", "engine/input.h", "engine/risk/order.h"):
            self.admitted("engine/cox/fit.cpp", f'"{include}"')
        self.refused("engine/cox/fit.cpp", '"survival/survival.h"', "engine does not know survival")
        self.refused("engine/cox/fit.cpp", '"frame/frame.h"', "engine does not know frame")

    def test_the_types_that_go_into_the_engine_know_nobody(self):
        self.admitted("engine/input.h", "<span>")
        self.refused("engine/input.h", '"numerics/sum.h"', "engine/input.h does not know numerics")
        self.refused("engine/input.h", '"engine/cox/fit.h"', "engine/input.h does not know engine")

    def test_a_frame_knows_numerics_only(self):
        self.admitted("frame/a.cpp", '"numerics/order.h"')
        self.refused("frame/a.cpp", '"engine/input.h"', "frame does not know engine")

    def test_a_model_knows_the_frame_and_the_types_that_go_into_the_engine(self):
        for include in ("frame/frame.h", "engine/input.h", "numerics/order.h"):
            self.admitted("model/a.cpp", f'"{include}"')
        self.refused("model/a.cpp", '"engine/cox/fit.h"', "model knows of engine only engine/input.h")
        self.refused("model/a.cpp", '"Dist/Dist"', "model does not know Dist")

    def test_procedures_know_models_and_fits(self):
        for include in ("model/design.h", "engine/cox/fit.h", "numerics/order.h", "Dist/Dist"):
            self.admitted("procedures/a.cpp", f'"{include}"')
        self.refused("procedures/a.cpp", '"frame/frame.h"', "procedures does not know frame")

    def test_a_report_knows_nobody(self):
        self.admitted("report/json.cpp", "<nlohmann/json.hpp>")
        self.refused("report/a.cpp", '"numerics/sum.h"', "report does not know numerics")

    def test_the_facade_knows_all_that_is_below(self):
        for include in ("report/report.h", "model/design.h", "frame/frame.h", "engine/cox/fit.h",
                        "procedures/selection.h", "numerics/order.h"):
            self.admitted("analysis/a.cpp", f'"{include}"')
        self.refused("analysis/a.cpp", '"pictures/draw.h"', "analysis does not know pictures")
        self.refused("analysis/a.cpp", '"cli/options.h"', "analysis does not know cli")

    def test_the_facade_enters_the_libraries_by_the_chief_headers(self):
        self.admitted("analysis/a.cpp", '"survival/survival.h"')
        self.admitted("analysis/a.cpp", '"survival/calls/life.h"')
        self.admitted("analysis/a.cpp", '"Dist/Dist"')
        self.refused("analysis/a.cpp", '"survival/life/life.h"',
                     "analysis knows of survival only survival/survival.h, survival/calls")
        self.refused("analysis/a.cpp", '"Dist/normal.h"', "analysis knows of Dist only Dist/Dist")
        self.refused("analysis/a.cpp", '"Klikro/matrix"', "analysis does not know Klikro")

    def test_the_faces_know_the_facade_and_the_report(self):
        for face in ("cli", "python", "web"):
            self.admitted(f"{face}/a.cpp", '"analysis/life.h"')
            self.admitted(f"{face}/a.cpp", '"report/report.h"')
            for include in ("survival/survival.h", "engine/cox/fit.h", "model/design.h"):
                self.refused(f"{face}/a.cpp", f'"{include}"',
                             f"{face} does not know {include.split('/')[0]}")
        self.admitted("cli/a.cpp", "<CLI/CLI.hpp>")
        self.admitted("cli/a.cpp", '"pictures/draw.h"')
        self.refused("web/a.cpp", '"pictures/draw.h"', "web does not know pictures")

    def test_pictures_know_the_report_only(self):
        self.admitted("pictures/a.cpp", '"report/figure.h"')
        self.refused("pictures/a.cpp", '"analysis/life.h"', "pictures does not know analysis")

    def test_an_example_knows_what_a_caller_does(self):
        self.admitted("examples/c/a.c", '"survival/survival.h"')
        self.admitted("examples/c/a.c", "<stdio.h>")
        self.refused("examples/c/a.c", '"survival/calls/life.h"',
                     "examples knows of survival only survival/survival.h")
        self.refused("examples/c/a.c", '"analysis/life.h"', "examples does not know analysis")
        self.admitted("examples/cpp/a.cpp", '"engine/cox/fit.h"')
        self.refused("examples/cpp/a.cpp", '"survival/survival.h"',
                     "examples/cpp does not know survival")
        self.refused("examples/c/a.c", '"tests/support/csv.h"', "examples does not know tests")
        self.refused("cli/a.cpp", '"examples/c/a.h"', "cli does not know examples")

    def test_relative_paths_do_not_go_round_the_rules(self):
        self.assertEqual(
            self.reports({"Dist/a.cpp": '#include "../Klikro/matrix"\n', "Klikro/matrix": ""}),
            ["Dist/a.cpp:1: ../Klikro/matrix: goes up by a relative path"])
        self.assertEqual(
            self.reports({"Dist/a.cpp": '#include "normal.h"\n', "Dist/normal.h": ""}), [])

    def test_what_browsers_lack_is_reported_where_it_is_compiled_for_them(self):
        text = "#include <bit>\n// std::format would do\nauto a = std::bit_cast<int>(1.f);\n"
        self.assertEqual(self.reports({"report/a.cpp": text}),
                         ["report/a.cpp:3: std::bit_cast: Emscripten's standard library lacks it"])
        for admitted in ("cli/a.cpp", "pictures/a.cpp", "tests/a.cpp"):
            self.assertEqual(self.reports({admitted: text}), [])

    def test_tests_may_include_anything(self):
        self.admitted("tests/a.cpp", '"survival/life/stratum.h"')

    def test_a_folder_of_sources_without_a_rule_is_reported(self):
        for source in ("extra/deep/a.cpp", "extra/a.cc", "extra/a.h", "extra/a.hpp", "extra/a.inc"):
            self.assertEqual(self.reports({source: ""}), ["extra: no rule for this folder"])
        self.assertEqual(self.reports({"extra/Chief": "#include <cmath>\n"}),
                         ["extra: no rule for this folder"])

    def test_a_source_at_the_root_is_reported(self):
        self.assertEqual(self.reports({"a.cpp": ""}), ["a.cpp: a source outside the folders"])

    def test_what_holds_no_sources_or_is_built_needs_no_rule(self):
        self.assertEqual(self.reports({"docs/a.md": "", "data/README": "Survival data.\n",
                                       "demo": "#!/bin/sh\n", "build/release/a.cpp": "",
                                       ".cache/a.cpp": ""}), [])


class CheckTable(unittest.TestCase):
    HEAD = "# Architecture\n\n| folder | knows | is |\n|---|---|---|\n"

    def reports(self, rows, files):
        """What is reported of a page with these rows, in a tree of these files."""
        with tempfile.TemporaryDirectory() as folder:
            page = {"docs/architecture.md": self.HEAD + "\n".join(rows) + "\n\n## Text\n"}
            return check_includes.check_table(tree(folder, files | page))

    def test_a_row_says_what_the_sources_include(self):
        self.assertEqual(
            self.reports(["| `Klikro/` | nobody | containers |", "| `solver/` | Klikro | a step |"],
                         {"Klikro/matrix": "", "solver/a.cpp": '#include "Klikro/matrix"\n'}), [])
        self.assertEqual(
            self.reports(["| `analysis/` | `survival/calls`, `Dist/Dist` | facade |"],
                         {"analysis/a.cpp": '#include "survival/calls/life.h"\n'}), [])

    def test_a_folder_without_a_row_is_reported(self):
        self.assertEqual(self.reports([], {"Dist/a.cpp": ""}),
                         ["docs/architecture.md: no row for Dist/"])

    def test_a_file_with_a_rule_of_its_own_needs_a_row(self):
        self.assertEqual(self.reports([], {"engine/input.h": ""}),
                         ["docs/architecture.md: no row for engine/input.h"])

    def test_an_include_that_the_row_does_not_name_is_reported(self):
        self.assertEqual(
            self.reports(["| `solver/` | nobody | a step |"],
                         {"solver/a.cpp": '#include "Klikro/matrix"\n'}),
            ["docs/architecture.md: the row of solver/ lacks Klikro"])

    def test_a_row_names_nothing_that_the_rules_do_not_admit(self):
        self.assertEqual(
            self.reports(["| `solver/` | Klikro, Dist | a step |"], {"solver/a.cpp": ""}),
            ["docs/architecture.md: the row of solver/ names Dist, which the rules do not"])

    def test_a_row_for_a_folder_without_sources_is_reported(self):
        self.assertEqual(self.reports(["| `report/` | nobody | tables |"], {}),
                         ["docs/architecture.md: a row for report/, which has no sources"])


if __name__ == "__main__":
    unittest.main()
