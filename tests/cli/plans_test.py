#!/usr/bin/env python3
"""The plan of every report, put into a file, gives the same report again, byte for byte.

    plans_test.py PROGRAM DATA CASES DOCS

Taken are the command-line cases that print JSON; each analysis has to be among them.
"""

import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

import jsonschema

PROGRAM = DATA = CASES = DOCS = None


def run(*arguments, **options):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, timeout=120,
                          encoding="utf-8", **options)


def schema(name):
    return jsonschema.Draft202012Validator(json.loads((DOCS / name).read_text(encoding="utf-8")))


def planned(report):
    """The entry of a plan that repeats the report."""
    return {"analysis": report["analysis"], "data": report["data"]["name"],
            "options": report["plan"]}


def single(document):
    """The only report of the document, as it stands alone: each line without the indent."""
    lines = document.split("\n")
    first = lines.index("    {")
    last = lines.index("    }")
    return "\n".join(line[4:] for line in lines[first:last + 1]) + "\n"


def json_cases(analyses):
    """The cases of reports from files: folder and arguments."""
    for case in sorted(CASES.iterdir()):
        arguments = shlex.split((case / "arguments").read_text())
        if (arguments and arguments[0] in analyses and "--json" in arguments and
                "-" not in arguments and not (case / "exit").exists()):
            yield case, arguments


class Plans(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def work(self, case):
        work = self.folder / case.name
        if (case / "input").is_dir():
            shutil.copytree(case / "input", work)
        else:
            work.mkdir()
        (work / "data").symlink_to(DATA, target_is_directory=True)
        return work

    def test_the_plan_of_a_report_repeats_it_byte_for_byte(self):
        analyses = {each["name"] for each in json.loads(run("help", "--json").stdout)["analyses"]}
        repeated, valid_plan, valid_run = set(), schema("plan.schema.json"), schema(
            "reports.schema.json")
        for case, arguments in json_cases(analyses):
            with self.subTest(case=case.name):
                work = self.work(case)
                once = run(*arguments, cwd=work)
                self.assertEqual(once.returncode, 0, once.stderr)
                report = json.loads(once.stdout)
                plan = {"analyses": [planned(report)]}
                valid_plan.validate(plan)
                (work / "plan.json").write_text(json.dumps(plan), encoding="utf-8")
                again = run("run", "plan.json", "--json", cwd=work)
                self.assertEqual(again.returncode, 0, again.stderr)
                valid_run.validate(json.loads(again.stdout))
                self.assertEqual(single(again.stdout), once.stdout)
                repeated.add(report["analysis"])
        self.assertEqual(repeated, analyses)

    def test_words_of_missing_cells_are_part_of_the_plan(self):
        (self.folder / "trial.csv").write_text("t,e\n1,1\n-9,0\n2,0\n3,1\n")
        once = run("life", "trial.csv", "--time", "t", "--event", "e", "--missing=-9", "--json",
                   cwd=self.folder)
        report = json.loads(once.stdout)
        self.assertEqual(report["plan"]["missing"], ["-9"])
        (self.folder / "plan.json").write_text(json.dumps({"analyses": [planned(report)]}))
        again = run("run", "plan.json", "--json", cwd=self.folder)
        self.assertEqual(single(again.stdout), once.stdout)

    def test_text_and_tables_are_those_of_the_command(self):
        os.symlink(DATA, self.folder / "data")
        options = {"time": "time", "event": "status", "group": "sex"}
        (self.folder / "plan.json").write_text(json.dumps(
            {"analyses": [{"analysis": "life", "data": "data/lung.csv", "options": options}]}))
        command = ["life", "data/lung.csv", "--time", "time", "--event", "status", "--group", "sex"]
        once = run(*command, "--out", "once", cwd=self.folder)
        again = run("run", "plan.json", "--out", "again", cwd=self.folder)
        self.assertEqual(again.stdout, once.stdout)
        tables = {path.name: path.read_bytes() for path in (self.folder / "once").iterdir()}
        self.assertIn("kaplanMeier.csv", tables)
        self.assertEqual({path.name: path.read_bytes()
                          for path in (self.folder / "again" / "1-life").iterdir()}, tables)


if __name__ == "__main__":
    PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
    DATA, CASES, DOCS = (pathlib.Path(each).resolve() for each in sys.argv[2:5])
    unittest.main(argv=sys.argv[:1])
