#!/usr/bin/env python3
"""One table in every form that the reader knows gives the same columns, by their digest; rows and
groups chosen by options give what a table with those rows and groups gives. Python's csv, gzip,
codecs and datetime write the forms.

    forms_test.py PROGRAM DATA
"""

import csv
import datetime
import gzip
import io
import json
import pathlib
import subprocess
import sys
import tempfile


def table(path):
    with open(path, encoding="utf-8", newline="") as stream:
        return list(csv.reader(stream))


def text(rows, delimiter=",", decimal=".", end="\n", group=""):
    """The rows as text; `group` parts thousands in numbers."""
    out = io.StringIO()
    writer = csv.writer(out, delimiter=delimiter, lineterminator=end)
    for i, row in enumerate(rows):
        writer.writerow([cell if i == 0 else spelled(cell, decimal, group) for cell in row])
    return out.getvalue()


def spelled(cell, decimal, group):
    try:
        number = float(cell)
    except ValueError:
        return cell
    whole, _, fraction = cell.partition(".")
    if group and abs(number) >= 1000:
        whole = f"{int(whole):,}".replace(",", group)
    return whole + (decimal + fraction if fraction else "")


class Runs:
    def __init__(self, program, folder):
        self.program, self.folder, self.problems, self.count = program, pathlib.Path(folder), [], 0

    def report(self, content, *arguments, code=0):
        path = self.folder / "table"
        path.write_bytes(content)
        result = subprocess.run([self.program, *arguments[:1], "table", *arguments[1:], "--json"],
                                capture_output=True, cwd=self.folder, check=False)
        if result.returncode != code:
            raise SystemExit(f"{arguments}: {result.stderr.decode()}")
        return json.loads(result.stdout)

    def same(self, name, one, other):
        self.count += 1
        if one != other:
            self.problems.append(f"{name}: {one} and {other}")


def scaled(rows, name, factor):
    """The rows with one column times `factor`, to have decimals or thousands."""
    at = rows[0].index(name)
    return [row if i == 0 else row[:at] + [f"{float(row[at]) * factor:.2f}"] + row[at + 1:]
            for i, row in enumerate(rows)]


def forms(runs, table_rows, name, arguments):
    rows, big = scaled(table_rows, name, 1.25), scaled(table_rows, name, 1234.5)
    plain = text(rows)
    wanted = runs.report(plain.encode(), *arguments)["data"]["digest"]
    wide = "\n".join(line + ",,," for line in plain.splitlines()) + "\n,,,,,\n\n,,,,,,\n"
    for name, content in {
        "CRLF": text(rows, end="\r\n").encode(),
        "CR": text(rows, end="\r").encode(),
        "byte-order mark": plain.encode("utf-8-sig"),
        "tabs": text(rows, "\t").encode(),
        "semicolons": text(rows, ";").encode(),
        "decimal commas": text(rows, ";", ",").encode(),
        "tabs and decimal commas": text(rows, "\t", ",").encode(),
        "quoted decimal commas": text(rows, ",", ",").encode(),
        "UTF-16": plain.encode("utf-16"),
        "UTF-16, big": plain.encode("utf-16-be"),
        "UTF-16, little": plain.encode("utf-16-le"),
        "Windows-1252": plain.encode("cp1252"),
        "gzip": gzip.compress(plain.encode()),
        "gzip in two members": gzip.compress(plain[:100].encode())
        + gzip.compress(plain[100:].encode()),
        "gzip of UTF-16 with tabs": gzip.compress(text(rows, "\t", ",").encode("utf-16")),
        "blank rows and columns": wide.encode(),
    }.items():
        runs.same(name, runs.report(content, *arguments)["data"]["digest"], wanted)
    wanted = runs.report(text(big).encode(), *arguments)["data"]["digest"]
    for name, content in {
        "thousands": text(big, ";", ".", group=","),
        "thousands and decimal commas": text(big, ";", ",", group="."),
        "blanks between thousands": text(big, ",", ".", group=" "),
        "apostrophes": text(big, ",", ".", group="'"),
        "no-break spaces": text(big, "\t", ",", group="\u202f"),
    }.items():
        runs.same(name, runs.report(content.encode(), *arguments)["data"]["digest"], wanted)


def dates(runs):
    start = datetime.date(1896, 2, 27)
    days = [start + datetime.timedelta(days=1237 * i) for i in range(100)]
    rows = [["x", "y"]] + [[str(day), str(i % 7)] for i, day in enumerate(days)]
    epoch = datetime.date(1970, 1, 1).toordinal()
    numbers = [["x", "y"]] + [[str(day.toordinal() - epoch), str(i % 7)]
                              for i, day in enumerate(days)]
    arguments = ["agree", "--first", "x", "--second", "y"]
    runs.same("dates", *(runs.report(text(each).encode(), *arguments)["data"]["digest"]
                         for each in (rows, numbers)))


def chosen(runs, rows, arguments):
    """What stays of a report when its data are named by rows instead of by an option."""
    def results(report):
        return [report[part] for part in ("tables", "facts", "summary")] + [report["data"]["digest"]]

    place = {name: i for i, name in enumerate(rows[0])}

    def missing(row, *names):
        return any(row[place[name]] in ("", "NA") for name in names)

    def number(row, name):
        return float(row[place[name]])

    for where, keep in {
        "age > 60": lambda row: not missing(row, "age") and number(row, "age") > 60,
        "age > 60 & sex == 'female'": lambda row: number(row, "age") > 60
        and row[place["sex"]] == "female",
        "`ph.karno` <= 80 | time > 500": lambda row: number(row, "time") > 500
        or (not missing(row, "ph.karno") and number(row, "ph.karno") <= 80),
        "!(wt.loss %in% c(0, 5, 10))": lambda row: not missing(row, "wt.loss")
        and number(row, "wt.loss") not in (0, 5, 10),
        "log(age)^2 / 2 > 8": lambda row: number(row, "age") > 54.598150033144236,
    }.items():
        some = [rows[0]] + [row for row in rows[1:] if keep(row)]
        by_option = runs.report(text(rows).encode(), *arguments, "--where", where)
        by_rows = runs.report(text(some).encode(), *arguments)
        runs.same(where, results(by_option), results(by_rows))
        runs.same(where + ", read", by_option["data"]["rows"]["read"], len(rows) - 1)
        runs.same(where + ", used", by_option["data"]["rows"]["used"],
                  by_rows["data"]["rows"]["used"])
        runs.same(where + ", plan", by_option["plan"]["where"], where)


def crossed(runs, rows, command, arguments, first, second):
    a, b = (rows[0].index(name) for name in (first, second))
    joined = [rows[0] + ["both"]] + [
        row + ["" if "" in (row[a], row[b]) else f"{first}={row[a]}, {second}={row[b]}"]
        for row in rows[1:]]
    by_option, by_column = (
        runs.report(text(joined).encode(), command, *arguments, "--group", group)
        for group in (f"{first},{second}", "both"))
    for report in (by_option, by_column):
        for each in report["tables"].values():
            for column in each["columns"]:
                column["heading"] = ""
    runs.same(f"{command}, crossed", by_option["tables"], by_column["tables"])
    runs.same(f"{command}, plan", by_option["plan"]["group"], [first, second])


def main():
    program, data = sys.argv[1], pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory() as folder:
        runs = Runs(program, folder)
        forms(runs, table(data / "pefr.csv"), "wright1",
              ["agree", "--first", "wright1", "--second", "mini1"])
        lung = table(data / "lung.csv")
        life = ["life", "--time", "time", "--event", "status", "--group", "sex"]
        forms(runs, lung, "time", life)
        dates(runs)
        chosen(runs, lung, life)
        crossed(runs, lung, "life", ["--time", "time", "--event", "status"], "sex", "ph.ecog")
        crossed(runs, table(data / "pbc.csv"), "gray", ["--time", "time", "--status", "status"],
                "trt", "sex")
        print("\n".join(runs.problems) or f"{runs.count} comparisons")
        sys.exit(1 if runs.problems else 0)


if __name__ == "__main__":
    main()
