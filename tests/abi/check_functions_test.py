"""The check of functions refuses what it has to: run against small libraries built on the spot."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("check_functions.py")
COMPILER = os.environ.get("CC", "cc").split()
NM = os.environ.get("NM", "nm")
LIBM = os.environ["LIBM"]


class CheckFunctions(unittest.TestCase):
    def check(self, body, archive=False, libm=LIBM):
        """What comes of a library whose one function has this body."""
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            source = folder / "one.c"
            source.write_text(f"#include <math.h>\ndouble one(double x) {{ return {body}; }}\n")
            library = folder / ("libone.a" if archive else "libone.so")
            kind = ["-c"] if archive else ["-shared"]
            subprocess.run([*COMPILER, *kind, "-fPIC", "-fno-builtin", source, "-o", library, "-lm"],
                           check=True)
            return subprocess.run([sys.executable, CHECK, NM, libm, library],
                                  capture_output=True, text=True)

    def test_arithmetic_passes(self):
        self.assertEqual(self.check("x * x + 1").returncode, 0)

    def test_exact_functions_pass_and_are_named(self):
        result = self.check("sqrt(x) + floor(x)")
        self.assertEqual(result.returncode, 0)
        self.assertIn("libone.so: floor, sqrt", result.stdout)

    def test_a_function_that_rounds_as_it_likes_fails_and_is_named(self):
        for name in ("exp", "log", "tgamma", "sin"):
            result = self.check(f"{name}(x)")
            self.assertEqual(result.returncode, 1, name)
            self.assertIn(f"libone.so takes {name} from the system", result.stdout)

    def test_an_archive_is_read_too(self):
        result = self.check("cbrt(x)", archive=True)
        self.assertEqual(result.returncode, 1)
        self.assertIn("libone.a takes cbrt from the system", result.stdout)

    def test_another_library_in_place_of_the_system_s_is_refused(self):
        with tempfile.TemporaryDirectory() as name:
            other = pathlib.Path(name) / "libother.so"
            subprocess.run([*COMPILER, "-shared", "-x", "c", os.devnull, "-o", other], check=True)
            self.assertNotEqual(self.check("x", libm=other).returncode, 0)


if __name__ == "__main__":
    unittest.main()
