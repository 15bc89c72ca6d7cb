"""Installs the build, moves the installed tree and uses it as a caller would: through CMake's
find_package, through pkg-config, and by including each public header alone.

The build to install and the compilers come in the environment: CMAKE, BUILD, CONFIG, GENERATOR,
LIBDIR, CC, CXX, CFLAGS, CXXFLAGS.
"""

import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent
CMAKE, BUILD = os.environ["CMAKE"], os.environ["BUILD"]
CFLAGS, CXXFLAGS = shlex.split(os.environ["CFLAGS"]), shlex.split(os.environ["CXXFLAGS"])
STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
C11 = [os.environ["CC"], *CFLAGS, "-std=c11", *STRICT]
CXX17 = [os.environ["CXX"], *CXXFLAGS, "-std=c++17", *STRICT]


def run(command, **options):
    """Runs a command and returns its output; a failure shows what the command said."""
    result = subprocess.run(
        [str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        text=True, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}\n{result.stdout}")
    return result.stdout


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        first = cls.folder / "first"
        cls.prefix = cls.folder / "moved here"  # a blank in the path must not matter
        run([CMAKE, "--install", BUILD, "--config", os.environ["CONFIG"], "--prefix", first])
        shutil.move(first, cls.prefix)
        cls.libraries = cls.prefix / os.environ["LIBDIR"]
        cls.include = cls.prefix / "include" / "survmeth"

    def test_programs_of_a_cmake_project_build_and_run(self):
        build = self.folder / "project"
        run([CMAKE, "-S", HERE / "project", "-B", build, "-G", os.environ["GENERATOR"],
             f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_BUILD_TYPE={os.environ['CONFIG']}",
             f"-DCMAKE_C_FLAGS={os.environ['CFLAGS']}",
             f"-DCMAKE_CXX_FLAGS={os.environ['CXXFLAGS']}"])
        run([CMAKE, "--build", build])
        for program in ("c_program", "cpp_program"):
            self.assertEqual(run([build / program]), "as expected\n")

    def test_a_c_program_builds_by_pkg_config_and_finds_the_siblings(self):
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.libraries / "pkgconfig")}
        flags = shlex.split(run(["pkg-config", "--cflags", "--libs", "survmeth"],
                                env=environment))
        program = self.folder / "c_program"
        # Only what the program calls is linked to it, so libsurvival has to find libKlikro and
        # libDist by its own run path.
        run([*C11, HERE / "project" / "program.c", "-o", program, "-Wl,--as-needed", *flags,
             f"-Wl,-rpath,{self.libraries}"])
        self.assertEqual(run([program]), "as expected\n")

    def test_every_public_header_compiles_alone_as_cpp(self):
        headers = [path for path in self.include.rglob("*") if path.is_file()]
        self.assertTrue(headers)
        for header in headers:
            with self.subTest(header=header.name):
                self.compile(CXX17, "alone.cpp", header)

    def test_the_flat_array_headers_compile_alone_as_c(self):
        calls = sorted((self.include / "survival" / "calls").glob("*.h"))
        self.assertTrue(calls)
        for header in [self.include / "survival" / "survival.h", self.include / "Dist" / "Dist",
                       *calls]:
            with self.subTest(header=header.name):
                self.compile(C11, "alone.c", header)

    def test_no_file_names_the_first_place_or_the_build(self):
        for path in [*self.libraries.rglob("*.cmake"), *self.libraries.rglob("*.pc")]:
            text = path.read_text(encoding="utf-8")
            self.assertNotIn(str(self.folder), text, path)
            self.assertNotIn(BUILD, text, path)

    def test_the_program_runs_where_it_stands(self):
        program = self.prefix / "bin" / "survmeth"
        if not program.exists():
            self.skipTest("built without programs")
        plain = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
        self.assertIn("survmeth", run([program, "--help"], env=plain))
        # The cases of the self-test and their data have moved along.
        self.assertIn("quantities agree", run([program, "selftest"], env=plain))

    def compile(self, compiler, name, header):
        source = self.folder / name
        source.write_text(f'#include "{header.relative_to(self.include)}"\n')
        run([*compiler, "-fsyntax-only", "-I", self.include, source])


if __name__ == "__main__":
    unittest.main()
