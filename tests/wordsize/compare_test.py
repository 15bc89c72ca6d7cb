"""The comparison of the two word sizes refuses what it has to."""

import unittest

import compare

ONE = "3ff0000000000000"
NEXT = "3ff0000000000001"  # the double after 1
FIVE_ON = "3ff0000000000005"
NAN = "7ff8000000000000"
OTHER_NAN = "fff8000000000000"


def table(free=ONE, dependent=ONE, whole="7"):
    """One call with an array that depends on exp, log and pow, and one that does not."""
    return {"call|1|d0": [free], "call|1|d1": [dependent], "call|1|i2": [whole],
            "other|1|d0": [ONE]}


def failures(system64=None, system32=None, own64=None, own32=None, far=None, near=None):
    """Every table is the plain one but for what is passed; `far` is moved."""
    return compare.compare([system64 or table(), system32 or table()],
                           [own64 or table(), own32 or table()],
                           [far or table(dependent="4000000000000000")], [near or table()])[0]


class Compare(unittest.TestCase):
    def test_equal_tables_pass(self):
        self.assertEqual(failures(), [])

    def test_a_bit_that_does_not_depend_on_the_functions_fails(self):
        self.assertIn("call|1|d0[0]", failures(system32=table(free=NEXT))[0])

    def test_a_bit_that_does_may_differ(self):
        self.assertEqual(failures(system32=table(dependent=NEXT)), [])

    def test_with_the_same_functions_no_bit_may(self):
        self.assertIn("with the same functions", failures(own32=table(dependent=NEXT))[0])

    def test_five_units_fail(self):
        self.assertIn("5 ulp", failures(system32=table(dependent=FIVE_ON))[0])

    def test_five_units_pass_where_one_unit_of_the_functions_moves_the_result_by_three(self):
        self.assertEqual(failures(system32=table(dependent=FIVE_ON),
                                  near=table(dependent="3ff0000000000003")), [])
        self.assertEqual(len(failures(system32=table(dependent=FIVE_ON),
                                      near=table(dependent="3ff0000000000002"))), 1)

    def test_a_whole_number_that_differs_fails(self):
        self.assertIn("call|1|i2[0]", failures(system32=table(whole="8"))[0])

    def test_not_a_number_is_the_same_whatever_its_bits(self):
        self.assertEqual(failures(system64=table(free=NAN), system32=table(free=OTHER_NAN)), [])

    def test_not_a_number_in_one_build_fails(self):
        self.assertEqual(len(failures(system32=table(dependent=NAN))), 1)

    def test_tables_of_different_arrays_fail(self):
        shorter = table()
        del shorter["call|1|d1"]
        self.assertEqual(len(failures(system32=shorter)), 1)

    def test_an_array_of_another_length_fails(self):
        longer = table()
        longer["call|1|d1"] = [ONE, ONE]
        self.assertEqual(len(failures(system32=longer)), 1)

    def test_functions_that_were_not_moved_fail(self):
        self.assertIn("not moved", failures(far=table())[0])

    def test_nothing_at_all_fails(self):
        self.assertTrue(compare.compare([{}, {}], [{}, {}], [{}], [{}])[0])

    def test_a_table_cut_short_is_refused(self):
        with self.assertRaises(ValueError):
            compare.parse("call|1|d0| 3ff0000000000000\n")

    def test_a_table_is_read(self):
        self.assertEqual(compare.parse(f"a, b|1|d0| {ONE} {NEXT}\nend\n"),
                         {"a, b|1|d0": [ONE, NEXT]})

    def test_zeros_of_both_signs_are_no_unit_apart(self):
        self.assertEqual(compare.ulps("0", "8000000000000000"), 0)
        self.assertEqual(compare.ulps("1", "8000000000000001"), 2)


if __name__ == "__main__":
    unittest.main()
