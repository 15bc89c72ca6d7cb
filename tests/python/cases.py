"""The command line's golden cases that print JSON of a plain file, as calls of Python."""

import csv
import re

import survmeth
from commandLine import CASES, ROOT, input_of, settings_of, words_of
from survmeth import _functions
from survmeth._names import argument_of

DECLARED = _functions.declared()
# Of the options of reading those that data in memory have; the words of --missing are other words.
MEMORY = [option for option in DECLARED["reading"] if option["name"] == "where"]
ANALYSES = {each["name"]: each for each in DECLARED["analyses"]}
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
        words = words_of(folder)
        self.name = folder.name
        self.file = words[1]
        self.path = input_of(folder, self.file)
        self.analysis = ANALYSES[words[0]]
        self.arguments = arguments_of(self.analysis, words[2:])
        for name in _functions.names_of_data(self.analysis):
            if name in self.arguments:
                file = self.arguments[name]
                self.arguments |= {name: columns_of(input_of(folder, file)), name + "_name": file}
        self.printed = of_memory(
            (folder / "stdout").read_text().replace("@VERSION@", survmeth.__version__))

    def call(self, data):
        function = getattr(survmeth, self.analysis["name"])
        return function(data, data_name=self.file, **self.arguments)


def arguments_of(analysis, words):
    """What follows the file on a command line, as arguments by name; None where a word is no option
    of the analysis or of data in memory."""
    settings = settings_of(analysis["options"] + MEMORY, words, {"--json": 0, "--plot": 1})
    return settings and {argument_of(name): value for name, value in settings.items()}


def is_plain(folder):
    """Whether it prints JSON of a file, with the analysis' own options, and is not refused."""
    words = words_of(folder)
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
