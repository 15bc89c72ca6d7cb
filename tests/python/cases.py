"""The command line's golden cases that print JSON of a plain file, as calls of Python."""

import csv
import pathlib
import re
import shlex

import survmeth
from survmeth import _functions
from survmeth._names import argument_of

ROOT = pathlib.Path(__file__).resolve().parents[2]
CASES = ROOT / "tests" / "cli" / "cases"
ANALYSES = {each["name"]: each for each in _functions.analyses()}
MISSING = {"", "na", "n/a", "nan", "null", "."}


def of_memory(printed):
    """The one thing that differs: a file's rows are known by their lines, of which the header is the
    first, those of memory by their number."""
    printed = re.sub(r"\bline ([0-9]+)", lambda found: f"row {int(found[1]) - 1}", printed)
    return re.sub(r'(?<="line": \[)[0-9,]+', lambda lines: ",".join(
        str(int(line) - 1) for line in lines[0].split(",")), printed)


class Case:
    """Of one case: the function, its arguments, the file and what is printed."""

    def __init__(self, folder):
        words = shlex.split((folder / "arguments").read_text())
        self.name = folder.name
        self.file = words[1]
        self.path = next(path for path in (folder / "input" / self.file, ROOT / self.file)
                         if path.exists())
        self.analysis = ANALYSES[words[0]]
        self.arguments = arguments_of(self.analysis, words[2:])
        self.printed = of_memory(
            (folder / "stdout").read_text().replace("@VERSION@", survmeth.__version__))

    def call(self, data):
        function = getattr(survmeth, self.analysis["name"])
        return function(data, data_name=self.file, **self.arguments)


def arguments_of(analysis, words):
    """What follows the file on a command line, as arguments by name; None where a word is none of
    the analysis' own options."""
    options = {"--" + option["name"]: option for option in analysis["options"]}
    arguments, words = {}, list(words)
    while words:
        word = words.pop(0)
        if word == "--json":
            continue
        if word == "--plot":  # a picture beside the JSON
            words.pop(0)
            continue
        option = options.get(word)
        if option is None:
            return None
        name = argument_of(option["name"])
        if option["type"] == "flag":
            arguments[name] = True
            if "table" in option:
                words.pop(0)
        elif option["type"] in ("texts", "columns", "numbers"):
            items = next(csv.reader([words.pop(0)]))
            arguments[name] = [float(item) for item in items] if option["type"] == "numbers" \
                else items
        elif option["type"] == "number":
            arguments[name] = float(words.pop(0))
        else:
            arguments[name] = words.pop(0)
    return arguments


def is_plain(folder):
    """Whether it prints JSON of a file, with the analysis' own options, and is not refused."""
    words = shlex.split((folder / "arguments").read_text())
    if "--json" not in words or words[0] not in ANALYSES or words[1] == "-":
        return False
    file = folder / "input" / words[1]
    if file.exists() and not set(";\t").isdisjoint(file.read_text().partition("\n")[0]):
        return False  # read in its own way
    return (not (folder / "exit").exists() and (folder / "stdout").exists()
            and arguments_of(ANALYSES[words[0]], words[2:]) is not None)


def cases():
    return [Case(folder) for folder in sorted(CASES.iterdir()) if is_plain(folder)]


def columns_of(path):
    """The columns of a CSV file: numbers where every cell is one, else texts; None is missing."""
    with open(path, newline="", encoding="utf-8") as file:
        header, *rows = [[cell.strip() for cell in row] for row in csv.reader(file) if row]
    return {name: cells_of([row[i] for row in rows]) for i, name in enumerate(header)}


def cells_of(cells):
    cells = [None if cell.lower() in MISSING else cell for cell in cells]
    try:
        return [None if cell is None else float(cell) for cell in cells]
    except ValueError:
        return cells
