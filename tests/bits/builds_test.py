"""The comparison of builds refuses what it has to, and leaves out only what cannot run."""

import platform
import unittest

import builds

ONE, NEXT = "3ff0000000000000", "3ff0000000000001"


class Digest(unittest.TestCase):
    def test_a_last_bit_changes_it(self):
        self.assertNotEqual(builds.digest({"a|1|d0": [ONE]}), builds.digest({"a|1|d0": [NEXT]}))

    def test_the_bits_of_a_nan_do_not(self):
        self.assertEqual(builds.digest({"a|1|d0": ["7ff8000000000000"]}),
                         builds.digest({"a|1|d0": ["fff8000000000001"]}))

    def test_the_order_of_the_calls_does_not(self):
        one, two = {"a|1|d0": [ONE], "b|1|i0": ["3"]}, {"b|1|i0": ["3"], "a|1|d0": [ONE]}
        self.assertEqual(builds.digest(one), builds.digest(two))


@unittest.skipUnless(platform.machine() == "x86_64", "the builds are for this processor")
class Lacking(unittest.TestCase):
    def test_a_compiler_that_is_not_there_is_named(self):
        self.assertEqual(builds.lacking("no-such-compiler", [], [], set()), "no no-such-compiler")

    def test_flags_that_it_does_not_take_are_named(self):
        self.assertIn("--no-such-flag", builds.lacking("g++", ["--no-such-flag"], [], set()))

    def test_instructions_that_the_processor_has_not_are_named(self):
        self.assertEqual(builds.lacking("g++", [], ["avx2", "fma"], {"avx2"}),
                         "the processor has no fma")

    def test_what_can_run_is_not_left_out(self):
        self.assertIsNone(builds.lacking("g++", [], ["avx2"], {"avx2", "fma"}))


if __name__ == "__main__":
    unittest.main()
