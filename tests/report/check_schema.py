#!/usr/bin/env python3
"""Holds JSON reports against the schema, and against what a schema cannot say.

    check_schema.py --schema FILE [--program PROGRAM] [FOLDER...]

Checked are the *.json files that PROGRAM FOLDER writes, every *.json file below the folders, and
the stdout of command-line cases (a folder with the file `arguments`) whose arguments have --json;
of a document with several reports each of them.
Columns and values of a table have the same keys in the same order, all columns one length, labels
are texts and the others numbers or null. Before that the schema has to refuse what is wrong.
"""

import argparse
import copy
import json
import pathlib
import shlex
import subprocess
import sys
import tempfile

import jsonschema


def unique(pairs):
    names = [name for name, _ in pairs]
    for name in names:
        if names.count(name) > 1:
            raise ValueError(f"member {name} stands twice")
    return dict(pairs)


def read(path):
    def refuse(constant):
        raise ValueError(f"{constant} is no JSON")
    return json.loads(path.read_text(encoding="utf-8"), object_pairs_hook=unique,
                      parse_constant=refuse)


def table_problems(name, table):
    problems = []
    kinds = {column["key"]: column["kind"] for column in table["columns"]}
    values = table["values"]
    if [column["key"] for column in table["columns"]] != list(values):
        problems.append(f"{name}: columns and values have other keys")
    if len({len(column) for column in values.values()}) > 1:
        problems.append(f"{name}: columns of several lengths")
    for key, column in values.items():
        texts = all(isinstance(each, str) for each in column)
        numbers = all(each is None or type(each) in (int, float) for each in column)
        if not (texts if kinds.get(key) == "label" else numbers):
            problems.append(f"{name}.{key}: not all {kinds.get(key)}")
    return problems


def problems_of(validator, report):
    problems = [f"{'/'.join(map(str, error.path))}: {error.message[:200]}"
                for error in validator.iter_errors(report)]
    if not problems:
        for name, table in report["tables"].items():
            problems += table_problems(name, table)
        rows = report["data"]["rows"]
        if rows["read"] != rows["used"] + rows["leftOut"]:
            problems.append("rows do not add up")
    return problems


def reports_of(document):
    """The reports of a document: its own, or those that it holds."""
    return document["reports"] if document.get("schema") == "survmeth-reports/1" else [document]


def documents(folder):
    """Every JSON report below a folder; what cases read is none."""
    yield from sorted(path for path in folder.rglob("*.json")
                      if "input" not in path.relative_to(folder).parts)
    for arguments in sorted(folder.rglob("arguments")):
        output = arguments.parent / "stdout"
        if output.is_file() and "--json" in shlex.split(arguments.read_text(encoding="utf-8")):
            yield output


def wrong(report):
    """The report spoilt in one way each, with what is wrong."""
    def spoilt(change):
        copied = copy.deepcopy(report)
        change(copied)
        return copied
    yield "another schema", spoilt(lambda r: r.update(schema="survmeth-report/0"))
    yield "a member too many", spoilt(lambda r: r.update(more=1))
    for member in report:
        yield f"no {member}", spoilt(lambda r, m=member: r.pop(m))
    yield "half a row", spoilt(lambda r: r["data"]["rows"].update(read=0.5))
    yield "a list for a fact", spoilt(lambda r: r["facts"].update(n=[1]))
    table = next(iter(report["tables"]))
    yield "an unknown kind", spoilt(lambda r: r["tables"][table]["columns"][0].update(kind="x"))
    yield "a flag in a column", spoilt(lambda r: r["tables"][table]["values"].update(n=[True, 1]))
    yield "a missing column", spoilt(lambda r: r["tables"][table]["values"].popitem())
    yield "a short column", spoilt(lambda r: r["tables"][table]["values"]["n"].pop())
    yield "text for numbers", spoilt(lambda r: r["tables"][table]["values"].update(n=["1", "2"]))
    yield "a note without a code", spoilt(lambda r: r["notes"][0].pop("code"))
    yield "rows that do not add up", spoilt(lambda r: r["data"]["rows"].update(used=0))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--schema", type=pathlib.Path, required=True)
    parser.add_argument("--program")
    parser.add_argument("folders", type=pathlib.Path, nargs="*")
    options = parser.parse_args()
    schema = read(options.schema)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)

    problems, checked = [], 0
    with tempfile.TemporaryDirectory() as written:
        folders = list(options.folders)
        if options.program:
            subprocess.run([options.program, written], check=True, timeout=60)
            sample = read(pathlib.Path(written) / "sample.json")
            for what, report in wrong(sample):
                if not problems_of(validator, report):
                    problems.append(f"the check lets {what} pass")
            folders.append(pathlib.Path(written))
        for folder in folders:
            found = 0
            for path in documents(folder):
                found += 1
                try:
                    for report in reports_of(read(path)):
                        problems += [f"{path}: {each}" for each in problems_of(validator, report)]
                except ValueError as error:
                    problems.append(f"{path}: {error}")
            checked += found
            if found == 0:
                problems.append(f"{folder} holds no report")
    print("\n".join(problems))
    print(f"{checked} reports read, {len(problems)} problems")
    return 1 if problems or checked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
