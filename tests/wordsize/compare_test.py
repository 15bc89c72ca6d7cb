"""The comparison of the two word sizes refuses what it has to."""

import unittest

import compare

ONE = "3ff0000000000000"
NEXT = "3ff0000000000001"  # the double after 1
NAN = "7ff8000000000000"
OTHER_NAN = "fff8000000000000"


def table(real=ONE, whole="7"):
    return {"call|1|d0": [ONE, real], "call|1|i1": [whole], "other|1|d0": [ONE]}


class Compare(unittest.TestCase):
    def test_equal_tables_pass(self):
        self.assertEqual(compare.compare(table(), table()), [])

    def test_a_last_bit_that_differs_fails(self):
        self.assertEqual(compare.compare(table(), table(real=NEXT)),
                         [f"call|1|d0[1]: {ONE} {NEXT}"])

    def test_zeros_of_both_signs_differ(self):
        self.assertEqual(len(compare.compare(table(real="0"), table(real="8000000000000000"))), 1)

    def test_a_whole_number_that_differs_fails(self):
        self.assertEqual(compare.compare(table(), table(whole="8")), ["call|1|i1[0]: 7 8"])

    def test_not_a_number_is_the_same_whatever_its_bits(self):
        self.assertEqual(compare.compare(table(real=NAN), table(real=OTHER_NAN)), [])

    def test_not_a_number_in_one_build_fails(self):
        self.assertEqual(len(compare.compare(table(), table(real=NAN))), 1)

    def test_tables_of_different_arrays_fail(self):
        shorter = table()
        del shorter["other|1|d0"]
        self.assertEqual(len(compare.compare(table(), shorter)), 1)
        self.assertEqual(len(compare.compare(shorter, table())), 1)

    def test_an_array_of_another_length_fails(self):
        longer = table()
        longer["call|1|i1"] = ["7", "7"]
        self.assertEqual(len(compare.compare(table(), longer)), 1)

    def test_nothing_at_all_fails(self):
        self.assertTrue(compare.compare({}, {}))

    def test_a_table_cut_short_is_refused(self):
        with self.assertRaises(ValueError):
            compare.parse("call|1|d0| 3ff0000000000000\n")

    def test_an_array_that_comes_twice_is_refused(self):
        with self.assertRaises(ValueError):
            compare.parse("call|1|i0| 1\ncall|1|i0| 1\nend\n")

    def test_a_table_is_read(self):
        self.assertEqual(compare.parse(f"a, b|1|d0| {ONE} {NEXT}\nend\n"),
                         {"a, b|1|d0": [ONE, NEXT]})


if __name__ == "__main__":
    unittest.main()
