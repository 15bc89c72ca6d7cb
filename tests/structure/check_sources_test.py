"""The check of sources reports what differs between machines, and only that."""

import unittest

import check_sources


class CheckSources(unittest.TestCase):
    def refused(self, line, what):
        found = check_sources.reports("engine/a.cpp", f"// A source.\n{line}\n")
        self.assertEqual([(number, text) for number, text, _ in found], [(2, what)], line)

    def admitted(self, line, path="engine/a.cpp"):
        self.assertEqual(check_sources.reports(path, line), [], line)

    def test_what_standard_libraries_do_differently_is_reported(self):
        self.refused("std::normal_distribution<> normal;", "normal_distribution")
        self.refused("std::shuffle(a, b, generator);", "std::shuffle")
        self.refused("return std::reduce(a, b);", "std::reduce")
        self.refused("std::complex<double> z;", "std::complex")
        self.refused("return std::hypot(x, y);", "hypot(")
        self.refused("typedef double Loose __attribute__((vector_size(16), aligned(8)));",
                     "vector_size(16), aligned(")
        self.refused("return fma(x, y, z);", "fma(")
        self.refused("std::random_device device;", "random_device")

    def test_types_of_several_widths_are_reported(self):
        self.refused("long double x;", "long double")
        self.refused("unsigned long n;", "long")
        self.refused("long n = 0;", "long")
        self.admitted("long long n = 0; unsigned long long m;")
        self.admitted("double longest = 0;")

    def test_what_reads_or_writes_as_the_locale_says_is_reported(self):
        self.refused("return std::stod(text);", "std::stod(")
        self.refused("return strtod(text, &end);", "strtod(")
        self.refused("std::snprintf(buffer, 9, format, x);", "std::snprintf(")
        self.refused("std::ostringstream out;", "std::ostringstream")
        self.admitted("return std::stoi(text);")

    def test_containers_in_an_order_of_their_own_are_only_looked_up_in(self):
        self.refused("std::unordered_map<int, int> map;", "unordered_map")
        self.admitted("std::unordered_set<int> set;", "frame/sink.cpp")
        self.admitted("std::map<int, int> map;")

    def test_sorts_that_leave_equal_elements_as_they_like_are_reported(self):
        def lines(text, path="engine/a.cpp"):
            return [line for line, _, _ in check_sources.unstable(path, text)]
        own = "std::sort(a.begin(), a.end(),\n [&](int i, int j) { return key(i, 0) < key(j, 0); });"
        self.assertEqual(lines("\n" + own), [2])
        self.assertEqual(lines("std::nth_element(a.begin(), b(1, 2), a.end(), less);"), [1])
        self.assertEqual(lines("std::ranges::sort(a);"), [1])
        self.assertEqual(lines(own, "frame/labels.cpp"), [])
        self.assertEqual(lines(own.replace("sort", "stable_sort")), [])
        self.assertEqual(lines("std::sort(f(a, b), a.end()); std::nth_element(a, b, c);"), [])
        self.assertEqual(lines("std::sort(a.begin(), a.end(), std::greater<>());"), [])

    def test_arrays_of_products_of_sizes_are_reported(self):
        def lines(text):
            return [line for line, _, _ in check_sources.wrapping(text)]
        self.assertEqual(lines("\nsums.assign(rows() * columns, 0.0);"), [2])
        self.assertEqual(lines("std::vector<double> all(n * n);"), [1])
        self.assertEqual(lines(": rows_(r), values_(blocks() * kBlock * columns, 0.0) {}"), [1])
        self.assertEqual(lines("std::vector<double> all(2 * n), more(kBlock * n);"), [])
        self.assertEqual(lines("sums.assign(numerics::product(rows(), columns), a * b);"), [1])
        self.assertEqual(lines("sums.assign(numerics::product(rows(), columns), 0.0);"), [])

    def test_comments_strings_and_includes_are_passed_over(self):
        self.admitted("// takes as long as all others\n/* long\n long */ int x;")
        self.admitted("const char* text = \"a long \\\" long text\"; int x = 1'000;")
        self.admitted("#include <unordered_map>\n")
        self.refused("/* a */ long x; // b", "long")

    def test_lines_are_counted_past_comments_of_several(self):
        found = check_sources.reports("engine/a.cpp", "/* 1\n2\n*/\nlong x;\n")
        self.assertEqual(found[0][:2], (4, "long"))

    def test_commands_that_allow_fused_operations_are_reported(self):
        self.assertIsNone(check_sources.loose("c++ -O3 -ffp-contract=off -c a.cpp"))
        self.assertEqual(check_sources.loose("c++ -O3 -c a.cpp"),
                         "fused operations are not switched off")
        self.assertEqual(check_sources.loose("c++ -ffp-contract=off -ffp-contract=fast -c a.cpp"),
                         "fused operations are not switched off")
        self.assertEqual(check_sources.loose("c++ -ffp-contract=off -Ofast -c a.cpp"),
                         "-Ofast changes results")


if __name__ == "__main__":
    unittest.main()
