"""The include check reports what goes against the rules, and only that, in trees made for it."""

import pathlib
import tempfile
import unittest

import check_includes


class CheckIncludes(unittest.TestCase):
    def reports(self, files):
        """What is reported in a tree of these files, a mapping of path to text."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path, text in files.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text)
            return check_includes.check(root)[0]

    def refused(self, path, include):
        reports = self.reports({path: f"// A source.\n#include {include}\n"})
        self.assertEqual(len(reports), 1, f"{path} with {include}")
        self.assertTrue(reports[0].startswith(f"{path}:2: "), reports[0])

    def admitted(self, path, include):
        self.assertEqual(self.reports({path: f"#include {include}\n"}), [])

    def test_the_libraries_know_what_is_below_them(self):
        self.admitted("solver/a.cpp", '"Klikro/matrix"')
        self.admitted("survival/cox/a.cpp", '"solver/solver.h"')
        self.admitted("survival/cox/a.cpp", '"Dist/Dist"')
        self.admitted("survival/cox/a.cpp", '"survival/SortApply.h"')

    def test_a_library_does_not_know_its_neighbours_or_what_is_above(self):
        self.refused("Klikro/a.cpp", '"Dist/Dist"')
        self.refused("Klikro/a.cpp", '"solver/solver.h"')
        self.refused("Dist/a.cpp", '"Klikro/matrix"')
        self.refused("solver/a.cpp", '"Dist/Dist"')
        self.refused("survival/a.cpp", '"analysis/table.h"')
        self.refused("survival/a.cpp", "<analysis/table.h>")

    def test_a_header_without_a_suffix_is_read_too(self):
        self.refused("Klikro/matrix", '"survival/survival.h"')

    def test_the_libraries_use_the_standard_library_only(self):
        self.admitted("Dist/a.cpp", "<cmath>")
        self.admitted("survival/calls/a.h", "<wchar.h>")
        self.refused("Dist/a.cpp", "<boost/math/distributions.hpp>")
        self.refused("survival/a.cpp", "<unistd.h>")
        self.refused("survival/a.cpp", '"tests/support/near.h"')

    def test_the_facade_enters_by_the_chief_headers(self):
        self.admitted("analysis/a.cpp", '"survival/survival.h"')
        self.admitted("analysis/a.cpp", '"survival/calls/life.h"')
        self.admitted("analysis/a.cpp", '"Dist/Dist"')
        self.refused("analysis/a.cpp", '"survival/life/life.h"')
        self.refused("analysis/a.cpp", '"Dist/normal.h"')
        self.refused("analysis/a.cpp", '"Klikro/matrix"')
        self.refused("analysis/a.cpp", '"cli/options.h"')

    def test_the_command_line_knows_the_facade_only(self):
        self.admitted("cli/a.cpp", '"analysis/life.h"')
        self.admitted("cli/a.cpp", "<CLI/CLI.hpp>")
        self.refused("cli/a.cpp", '"survival/survival.h"')

    def test_an_example_knows_what_a_caller_does(self):
        self.admitted("examples/c/a.c", '"survival/survival.h"')
        self.admitted("examples/c/a.c", "<stdio.h>")
        self.refused("examples/c/a.c", '"survival/calls/life.h"')
        self.refused("examples/c/a.c", '"analysis/life.h"')
        self.refused("examples/c/a.c", '"tests/support/csv.h"')
        self.refused("cli/a.cpp", '"examples/c/a.h"')

    def test_relative_paths_do_not_go_round_the_rules(self):
        self.assertEqual(
            len(self.reports({"Dist/a.cpp": '#include "../Klikro/matrix"\n', "Klikro/matrix": ""})),
            1)
        self.assertEqual(
            self.reports({"Dist/a.cpp": '#include "normal.h"\n', "Dist/normal.h": ""}), [])

    def test_tests_may_include_anything(self):
        self.admitted("tests/a.cpp", '"survival/life/stratum.h"')


if __name__ == "__main__":
    unittest.main()
