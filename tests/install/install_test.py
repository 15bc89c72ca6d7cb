"""The add-in's libraries in the installed tree, as a caller uses them: through CMake's find_package,
through pkg-config, and by including each public header alone.
"""

import unittest

import installed
from installed import BUILD, C11, CXX17, HERE, run


class AddIn(installed.Installed):
    def test_programs_of_a_cmake_project_build_and_run(self):
        build = self.project(HERE / "project")
        for program in ("c_program", "cpp_program"):
            self.assertEqual(run([build / program]), "as expected\n")

    def test_a_c_program_builds_by_pkg_config_and_finds_the_siblings(self):
        flags = self.pkg_config("--cflags", "--libs")
        program = self.folder / "c_program"
        # Only what the program calls is linked to it, so libsurvival has to find libKlikro and
        # libDist by its own run path.
        run([*C11, HERE / "project" / "program.c", "-o", program, "-Wl,--as-needed", *flags,
             f"-Wl,-rpath,{self.libraries}"])
        self.assertEqual(run([program]), "as expected\n")

    def test_every_public_header_compiles_alone_as_cpp(self):
        for header in self.headers(addin=True):
            with self.subTest(header=header.name):
                self.compile(CXX17, "alone.cpp", [header])

    def test_the_flat_array_headers_compile_alone_as_c(self):
        calls = sorted((self.include / "survival" / "calls").glob("*.h"))
        self.assertTrue(calls)
        for header in [self.include / "survival" / "survival.h", self.include / "Dist" / "Dist",
                       *calls]:
            with self.subTest(header=header.name):
                self.compile(C11, "alone.c", [header])

    def test_no_file_names_the_first_place_or_the_build(self):
        for path in [*self.libraries.rglob("*.cmake"), *self.libraries.rglob("*.pc")]:
            text = path.read_text(encoding="utf-8")
            self.assertNotIn(str(self.folder), text, path)
            self.assertNotIn(BUILD, text, path)


if __name__ == "__main__":
    unittest.main()
