"""The golden cases of the command line, read as calls that other faces can make."""

import csv
import pathlib
import shlex

ROOT = pathlib.Path(__file__).resolve().parents[2]
CASES = ROOT / "tests" / "cli" / "cases"


def words_of(folder):
    """What the case types behind the program's name."""
    return shlex.split((folder / "arguments").read_text())


def input_of(folder, file):
    """Where the file is that the case names."""
    return next(path for path in (folder / "input" / file, ROOT / file) if path.exists())


def settings_of(options, words, passed_over=()):
    """What follows the file on a command line, by the names of options; None where a word is none of
    these. `passed_over` are words of the shell's own, each with how many follow it."""
    by_word = {"--" + option["name"]: option for option in options}
    shell = dict(passed_over)
    settings, words = {}, list(words)
    while words:
        word = words.pop(0)
        if word in shell:
            del words[:shell[word]]
            continue
        option = by_word.get(word)
        if option is None:
            return None
        name, kind = option["name"], option["type"]
        if kind == "flag":
            settings[name] = True
            if "table" in option:
                words.pop(0)
        elif kind in ("texts", "columns", "numbers"):
            items = next(csv.reader([words.pop(0)], skipinitialspace=True))
            settings[name] = [float(item) for item in items] if kind == "numbers" else items
        else:
            settings[name] = float(words.pop(0)) if kind == "number" else words.pop(0)
    return settings
