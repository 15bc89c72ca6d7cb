"""The comparison of builds refuses what it has to, and leaves out only what cannot run."""

import contextlib
import io
import platform
import unittest

import builds

ONE, NEXT = "3ff0000000000000", "3ff0000000000001"


class Digests(unittest.TestCase):
    def test_a_last_bit_changes_its_family_only(self):
        one = builds.digests({"cox|a|1|d0": [ONE], "life|a|1|d0": [ONE]})
        other = builds.digests({"cox|a|1|d0": [NEXT], "life|a|1|d0": [ONE]})
        self.assertNotEqual(one["cox"], other["cox"])
        self.assertEqual(one["life"], other["life"])

    def test_the_bits_of_a_nan_do_not(self):
        self.assertEqual(builds.digests({"cox|a|1|d0": ["7ff8000000000000"]}),
                         builds.digests({"cox|a|1|d0": ["fff8000000000001"]}))

    def test_the_order_of_the_calls_does_not(self):
        one = {"cox|a|1|d0": [ONE], "cox|b|1|i0": ["3"]}
        two = {"cox|b|1|i0": ["3"], "cox|a|1|d0": [ONE]}
        self.assertEqual(builds.digests(one), builds.digests(two))

    def test_results_are_counted_by_family(self):
        self.assertEqual(
            builds.counts({"cox|a|1|d0": [ONE, ONE], "cox|b|1|i0": ["3"], "life|a|1|d0": [ONE]}),
            {"cox": 3, "life": 1})


class Comparison(unittest.TestCase):
    def made(self, *tables):
        comparison = builds.Comparison()
        with contextlib.redirect_stdout(io.StringIO()) as said:
            for k, table in enumerate(tables):
                comparison.add(f"run {k}", table)
        return comparison, said.getvalue()

    def test_equal_tables_differ_in_nothing(self):
        comparison, _ = self.made({"cox|a|1|d0": [ONE]}, {"cox|a|1|d0": [ONE]})
        self.assertEqual((comparison.ran, comparison.failures), (2, 0))

    def test_a_last_bit_is_counted_and_shown(self):
        comparison, said = self.made({"cox|a|1|d0": [ONE]}, {"cox|a|1|d0": [NEXT]})
        self.assertEqual(comparison.failures, 1)
        self.assertIn(f"cox|a|1|d0[0]: {ONE} {NEXT}", said)


@unittest.skipUnless(platform.machine() == "x86_64", "the builds are for this processor")
class Lacking(unittest.TestCase):
    def lacking(self, found, **changed):
        return builds.lacking(builds.Build("a build", **{"compiler": "g++", "optimisation": "-O1",
                                                         **changed}), found)

    def test_a_compiler_that_is_not_there_is_named(self):
        self.assertEqual(self.lacking(set(), compiler="no-such-compiler"), "no no-such-compiler")

    def test_flags_that_it_does_not_take_are_named(self):
        self.assertIn("--no-such-flag", self.lacking(set(), flags=("--no-such-flag",)))

    def test_instructions_that_the_processor_has_not_are_named(self):
        self.assertEqual(self.lacking({"avx2"}, features=("avx2", "fma")),
                         "the processor has no fma")

    def test_what_can_run_is_not_left_out(self):
        self.assertIsNone(self.lacking({"avx2", "fma"}, features=("avx2",)))

    def test_every_run_is_of_a_build(self):
        self.assertEqual({run.build for run in builds.RUNS}, set(builds.BUILDS))


if __name__ == "__main__":
    unittest.main()
