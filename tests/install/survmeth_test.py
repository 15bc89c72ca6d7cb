"""libsurvmeth in the installed tree, as a caller in C++ uses it: the programs of examples/cpp build
through find_package and through pkg-config and print what another program made of the data.
"""

import os
import re
import unittest

import installed
from installed import CMAKE, CXX20, CXXFLAGS, HERE, ROOT, run

DATA = ROOT / "data"
EXPECTED = ROOT / "tests" / "examples"


def without_library_path():
    return {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}


class Library(installed.Installed):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.program = cls.prefix / "bin" / "survmeth"
        cls.facade = cls.program.exists()

    def check(self, folder):
        """The programs of a folder print what R's survival, or the command line, does."""
        self.assertEqual(run([folder / "spans"]), (EXPECTED / "spans.txt").read_text())
        if self.facade:
            self.assertEqual(run([folder / "hazards", DATA / "lung.csv"]),
                             (EXPECTED / "hazards.txt").read_text())
            life = [self.program, "life", "data/leukemia.csv", "--time", "weeks", "--event",
                    "relapse", "--group", "treatment"]
            for option in ([], ["--json"]):
                printed = run([folder / "report", "data/leukemia.csv", *option], cwd=ROOT)
                self.assertEqual(printed, run([*life, "--quiet", *option], cwd=ROOT,
                                              env=without_library_path()))

    def test_the_examples_build_by_find_package(self):
        self.check(self.project(HERE / "examples", f"-DEXAMPLES={ROOT / 'examples' / 'cpp'}",
                                f"-DFACADE={int(self.facade)}"))

    def test_an_example_builds_by_pkg_config(self):
        name, data, expected = ("hazards", [DATA / "lung.csv"], "hazards.txt") if self.facade else (
            "spans", [], "spans.txt")
        program = self.folder / "by_pkg_config"
        run([*CXX20, ROOT / "examples" / "cpp" / f"{name}.cpp", "-o", program,
             *self.pkg_config("--cflags", "--static", "--libs"), f"-Wl,-rpath,{self.libraries}"])
        self.assertEqual(run([program, *data]), (EXPECTED / expected).read_text())

    def test_the_page_shows_what_the_examples_print(self):
        page = (ROOT / "docs" / "cpp.md").read_text()
        shown = re.findall(r"^```text\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
        self.assertEqual(shown, [(EXPECTED / "spans.txt").read_text(),
                                 (EXPECTED / "hazards.txt").read_text()])

    @unittest.skipIf(CXXFLAGS, "the page's command takes no flags")
    def test_the_command_of_the_page_builds_what_it_says(self):
        page = (ROOT / "docs" / "cpp.md").read_text()
        (command,) = re.findall(r"^```sh\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
        (self.folder / "examples").symlink_to(ROOT / "examples")
        # The tree's folder has a blank in its name, which the shell would take for an end.
        plain = self.folder / "moved"
        plain.symlink_to(self.prefix)
        packages = plain / os.environ["LIBDIR"] / "pkgconfig"
        environment = {**os.environ, "PKG_CONFIG_PATH": str(packages)}
        run(["sh", "-e", "-c", command], cwd=self.folder, env=environment)
        self.assertEqual(
            run([self.folder / "spans"],
                env={**os.environ, "LD_LIBRARY_PATH": str(self.libraries)}),
            (EXPECTED / "spans.txt").read_text())

    def refused(self, request, words):
        folder = self.folder / request.replace(" ", "-")
        folder.mkdir()
        (folder / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(caller LANGUAGES NONE)\n"
            f"find_package(survmeth {request})\n")
        with self.assertRaisesRegex(AssertionError, words):
            run([CMAKE, "-S", folder, "-B", folder / "build",
                 f"-DCMAKE_PREFIX_PATH={self.prefix}"])

    def test_a_component_that_is_not_there_is_named(self):
        self.refused("0.1 REQUIRED COMPONENTS engine plotter",
                     "This survmeth has no component plotter")

    def test_another_minor_version_is_refused(self):
        self.refused("0.9 REQUIRED", 'compatible with requested version "0.9"')

    # Whatever the flags: once will do.
    @unittest.skipIf(CXXFLAGS, "a build with the compiler's own flags tests it")
    def test_every_public_header_compiles_alone(self):
        for header in self.headers(addin=False):
            with self.subTest(header=header.relative_to(self.include)):
                self.compile(CXX20, "alone.cpp", [header])

    def test_all_headers_of_the_tree_go_together(self):
        self.compile(CXX20, "together.cpp", [*self.headers(addin=False), *self.headers(addin=True)])

    def test_the_program_runs_where_it_stands(self):
        if not self.facade:
            self.skipTest("built without programs")
        self.assertIn("survmeth", run([self.program, "--help"], env=without_library_path()))
        # The cases of the self-test and their data have moved along.
        self.assertIn("quantities agree",
                      run([self.program, "selftest"], env=without_library_path()))


if __name__ == "__main__":
    unittest.main()
