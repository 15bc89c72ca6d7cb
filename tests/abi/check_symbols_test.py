"""The symbol comparison refuses what it has to: run against small libraries built on the spot."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("check_symbols.py")
COMPILER = os.environ.get("CC", "cc").split()
NM = os.environ.get("NM", "nm")


class CheckSymbols(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        source = self.folder / "two.c"
        source.write_text("int first(void) { return 1; }\nint second(void) { return 2; }\n")
        self.library = self.folder / "libtwo.so"
        subprocess.run([*COMPILER, "-shared", "-fPIC", source, "-o", self.library], check=True)

    def check(self, names, *more):
        listed = self.folder / "two.symbols"
        listed.write_text("".join(name + "\n" for name in names))
        return subprocess.run(
            [sys.executable, CHECK, NM, self.library, listed, *more],
            capture_output=True, text=True)

    def test_the_exact_list_passes(self):
        self.assertEqual(self.check(["first", "second"]).returncode, 0)

    def test_an_unlisted_symbol_fails_and_is_named(self):
        result = self.check(["first"])
        self.assertEqual(result.returncode, 1)
        self.assertIn("not listed:   second", result.stdout)

    def test_a_missing_symbol_fails_and_is_named(self):
        result = self.check(["first", "second", "third"])
        self.assertEqual(result.returncode, 1)
        self.assertIn("not exported: third", result.stdout)

    def test_an_unsorted_list_is_refused(self):
        self.assertNotEqual(self.check(["second", "first"]).returncode, 0)

    def test_another_number_than_promised_fails(self):
        self.assertEqual(self.check(["first", "second"], "--count", "2").returncode, 0)
        result = self.check(["first", "second"], "--count", "3")
        self.assertEqual(result.returncode, 1)
        self.assertIn("3 are promised", result.stdout)

    def test_a_family_counts_only_where_its_sources_are(self):
        lists = self.folder / "lists"
        lists.mkdir()
        (lists / "here.symbols").write_text("second\n")
        (lists / "elsewhere.symbols").write_text("third\n")
        sources = self.folder / "sources"
        (sources / "here").mkdir(parents=True)
        self.assertEqual(self.check(["first"], "--families", sources, lists).returncode, 0)
        (sources / "elsewhere").mkdir()
        self.assertEqual(self.check(["first"], "--families", sources, lists).returncode, 1)


if __name__ == "__main__":
    unittest.main()
