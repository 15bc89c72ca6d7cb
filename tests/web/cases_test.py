#!/usr/bin/env python3
"""What the module gives is what the command line prints, byte for byte: JSON, text and refusals.

    cases_test.py FOLDER    (that holds survmeth.mjs)

Taken are the golden cases of the command line that name a file and no option of the shell's own.
"""

import json
import pathlib
import re
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "support"))
from commandLine import CASES, input_of, settings_of, words_of  # noqa: E402

# Of the shell: forms that the module gives when it is asked, and what goes to other places.
SHELL = {"--json": 0, "--quiet": 0}
# Refused where words are read, before there are values.
BY_THE_SHELL = re.compile("\nTry 'survmeth |has an empty item|stands there twice$|: a quote in ", re.M)
FOLDER = None


def outcomes(calls):
    """Of each call what it gives; of none the declarations."""
    run = subprocess.run(["node", HERE / "run.mjs", FOLDER], input=json.dumps(calls),
                         capture_output=True, check=False, timeout=120, encoding="utf-8")
    if run.returncode != 0:
        raise RuntimeError(run.stderr)
    return json.loads(run.stdout)


def content(path):
    return path.read_text(encoding="utf-8") if path.exists() else ""


class Case:
    def __init__(self, folder, analysis, reading):
        words = words_of(folder)
        self.name = folder.name
        self.folder = folder
        self.is_json = "--json" in words
        file = input_of(folder, words[1])
        if not file.is_file() or file.read_bytes().startswith(b"\x1f\x8b"):
            raise LookupError
        options = settings_of(analysis["options"] + reading, words[2:], SHELL)
        if options is None:
            raise LookupError
        wanted = {"json": {}} if self.is_json else {"text": {"width": 0, "notes": False}}
        self.call = {"analysis": words[0], "options": options, "file": str(file),
                     "name": words[1], "wanted": wanted}
        if "newdata" in options:
            self.call["newdata"] = str(input_of(folder, options["newdata"]))


def cases_of(declared):
    analyses = {each["name"]: each for each in declared["analyses"]}
    for folder in sorted(CASES.iterdir()):
        words = words_of(folder)
        if len(words) < 2 or words[0] not in analyses or words[1].startswith("-"):
            continue
        try:
            yield Case(folder, analyses[words[0]], declared["reading"])
        except (LookupError, ValueError, StopIteration):
            # A file that is not there or is packed, an option of the shell, a number that is none.
            pass


class Cases(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.declared = outcomes([])
        cases = list(cases_of(cls.declared))
        cls.cases = list(zip(cases, outcomes([case.call for case in cases])))

    def succeed(self, form, is_json):
        """How many cases of this form are the same; each that is not is shown."""
        analyses = []
        for case, outcome in self.cases:
            if case.is_json is not is_json or (case.folder / "exit").exists():
                continue
            expected = content(case.folder / "stdout").replace("@VERSION@", self.declared["version"])
            with self.subTest(case.name):
                self.assertEqual(outcome.get(form, outcome), expected)
                analyses.append(case.call["analysis"])
        return analyses

    def test_json_is_the_command_lines(self):
        analyses = self.succeed("json", True)
        self.assertEqual(set(analyses), {each["name"] for each in self.declared["analyses"]})
        self.assertGreaterEqual(len(analyses), 18)

    def test_text_is_the_command_lines(self):
        self.assertGreaterEqual(len(self.succeed("text", False)), 100)

    def test_refusals_are_the_command_lines(self):
        count = 0
        for case, outcome in self.cases:
            if content(case.folder / "exit").strip() != "2":
                continue
            name = case.call["analysis"]
            expected = content(case.folder / "stderr").removeprefix(f"survmeth {name}: ")
            if BY_THE_SHELL.search(expected):
                continue
            expected = re.sub("--([a-z])", r"\1", expected)
            with self.subTest(case.name):
                self.assertEqual(outcome.get("refused", "") + "\n", expected)
                count += 1
        self.assertGreaterEqual(count, 100)


if __name__ == "__main__":
    FOLDER = sys.argv.pop(1)
    unittest.main()
