#!/usr/bin/env python3
"""The self-test that ships: its extent, and that every one of its expectations can fail.

    selftest_test.py PROGRAM SOURCE
"""

import copy
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = SOURCE = None


def run(*arguments):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, timeout=120,
                          encoding="utf-8")


def shipped():
    return {path.stem: json.loads(path.read_text(encoding="utf-8"))
            for path in sorted((SOURCE / "selftest").glob("*.json"))}


def spoilt(quantity):
    """The quantity with an expectation that is wrong by a little more than its tolerance."""
    wrong = dict(quantity)
    expected = quantity["expected"]
    if expected is None or isinstance(expected, str):
        wrong.update(expected=1, tolerance=0)
    elif expected == 0:
        wrong.update(expected=3 * quantity["tolerance"] or 1)
    else:
        # Both the reference and the program may already be at their end of the tolerance.
        wrong.update(expected=expected * (1 + 2.5 * quantity["tolerance"]))
    return wrong


class Selftest(unittest.TestCase):
    def test_it_agrees_here(self):
        result = run("selftest")
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 0)

    def test_it_holds_sixty_quantities_over_every_analysis(self):
        cases = shipped()
        quantities = [each for case in cases.values() for each in case["quantities"]]
        self.assertGreaterEqual(len(quantities), 60)
        self.assertTrue(all(each["source"] for each in quantities))
        declared = {each["name"] for each in json.loads(run("help", "--json").stdout)["analyses"]}
        self.assertEqual({each["analysis"] for case in cases.values()
                          for each in case["plan"]["analyses"]}, declared)

    def test_every_wrong_expectation_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            cases = pathlib.Path(folder) / "cases"
            cases.mkdir()
            (pathlib.Path(folder) / "data").symlink_to(SOURCE / "data", target_is_directory=True)
            for name, case in shipped().items():
                wrong = copy.deepcopy(case)
                wrong["quantities"] = [spoilt(each) for each in case["quantities"]]
                (cases / f"{name}.json").write_text(json.dumps(wrong), encoding="utf-8")
                result = run("selftest", "--cases", str(cases))
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stdout.count("DIFFERS"), len(case["quantities"]))
                self.assertEqual(result.stderr.count("\n"), len(case["quantities"]))
                for quantity in case["quantities"]:
                    self.assertIn(f"survmeth selftest: {name}: {label(quantity)}: expected ",
                                  result.stderr)
                (cases / f"{name}.json").unlink()

    def test_the_record_is_the_same_bytes_again_unless_it_has_the_date(self):
        with tempfile.TemporaryDirectory() as folder:
            records = [pathlib.Path(folder) / name for name in ("one.html", "two.html")]
            for record in records:
                self.assertEqual(run("selftest", "--html", str(record)).returncode, 0)
            self.assertEqual(records[0].read_bytes(), records[1].read_bytes())


def label(quantity):
    """The quantity as messages name it."""
    if "fact" in quantity:
        return quantity["fact"]
    row = ", ".join(f"{key}: {value}" for key, value in quantity["row"].items())
    return f"{quantity['table']}.{quantity['column']} ({row})"


if __name__ == "__main__":
    PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
    SOURCE = pathlib.Path(sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
