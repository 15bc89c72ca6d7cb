"""Docstrings of the functions, made from the declarations."""

import re
import textwrap

from survmeth._declared import SHARED, names_of_data
from survmeth._examples import EXAMPLES, SOURCES
from survmeth._names import argument_of, in_python

TYPES = {
    "flag": "bool",
    "number": "float",
    "text": "str",
    "choice": "str",
    "formula": "str",
    "numbers": "float or list of float",
    "texts": "str or list of str",
    "data": "columns or a table, like data",
}


def type_of(option):
    """With the range, and of columns what their n cells are."""
    if "cells" in option:
        several = option["type"] == "columns"
        cells = option["cells"]
        if "leastCell" in option:
            cells += f" not below {option['leastCell']:g}"
        return f"{'names of columns' if several else 'name of a column'} of n {cells}"
    kind = TYPES[option["type"]]
    expected = option.get("expected", "a number").removesuffix(", separated by commas")
    if expected.startswith("a whole number"):
        kind = "int"
    return kind if expected in ("a number", "numbers") else f"{kind}, {expected}"


def help_of(option):
    if "table" in option:
        return f"Whether the result has the table {option['table']}"
    text = option["help"].replace(", separated by commas", "")
    if option["type"] == "data":  # "File of new data, ...; read as FILE is"
        text = text.partition("; read as")[0].replace("File of new", "New")
    if re.fullmatch("[A-Z]", option.get("value", "")):  # as in "level 1 - A"
        text = re.sub(rf"(?<=\W){option['value']}\b", argument_of(option["name"]), text)
    if "choices" in option:
        text += ": " + ", ".join(repr(choice) for choice in option["choices"])
    if "default" in option:
        text += f" (default {option['default']})"
    return text


def parameters_of(analysis):
    lines = ["data : dict of columns, or a table of pandas, polars, pyarrow or Arrow's interface",
             "    Of n rows. Those with a missing cell in a column asked for are left out and counted."]
    for option in analysis["options"]:
        required = "" if option["required"] else ", optional"
        lines.append(f"{argument_of(option['name'])} : {type_of(option)}{required}")
        lines.append("    " + help_of(option) + ".")
    for name in names_of_data(analysis):
        lines += [f"{name}_name : optional", "    What reports call these data."]
    for name, (_, text) in SHARED.items():
        lines += [f"{name} : optional", "    " + text + "."]
    return lines


def returns_of(analysis):
    lines = ["Result",
             "    With the tables, as far as they are asked for: " + ", ".join(analysis["tables"])
             + ". Keys of their columns: docs/report.md."]
    if analysis["figures"]:
        lines.append("    plot() draws: " + ", ".join(analysis["figures"]) + ".")
    return lines


RAISES = """\
RefusedInput
    A ValueError: data or an argument that cannot be analysed. Names the argument, the column, the
    row, what stands there and what was expected.
TypeError
    An argument that there is not, or a required one that is not given.
KeyboardInterrupt
    The run was interrupted; nothing of it is left.""".splitlines()


def broken(lines):
    """Prose in lines that a terminal has room for; names and types of parameters stay whole."""
    for line in lines:
        indent = "    " if line.startswith("    ") else ""
        if len(line) <= 100 or (" : " in line and not indent):
            yield line
        else:
            yield from textwrap.wrap(line, 100, subsequent_indent=indent, break_long_words=False,
                                     break_on_hyphens=False)


def section(name, lines):
    return ["", name, "-" * len(name), *lines]


def docstring_of(analysis, of=None):
    """of  the analysis whose results it follows from"""
    name = f"{of}.{analysis['name']}" if of else analysis["name"]
    lines = [analysis["summary"] + "."]
    if analysis["details"]:
        lines += ["", analysis["details"]]
    lines += section("Parameters", parameters_of(analysis))
    lines += section("Returns", returns_of(analysis))
    lines += section("Raises", RAISES)
    # An analysis may be declared before anything is said of it here.
    if name in SOURCES:
        lines += section("References", ["The methods of a result: result.methods. Chiefly:",
                                        *(f"- {source}" for source in SOURCES[name])])
    text = "\n".join(broken(in_python("\n".join(lines)).split("\n"))) + "\n"
    if name in EXAMPLES:
        text += "\n".join(section("Examples", EXAMPLES[name].splitlines())) + "\n"
    return text
