"""The functions that a person calls, made from the declarations of the analyses."""

import inspect
import json

import numpy as np

from survmeth import _core, _data
from survmeth._names import argument_of, in_python
from survmeth._result import Result

# What every function takes besides the options of its analysis.
SHARED = {
    "data_name": ("data", "What reports call the data"),
    "missing": (None, "What is missing besides None, NaN, NA and empty texts: a list of labels or "
                      "numbers"),
    "where": (None, "Take only the rows that meet this condition, as in 'age > 40 & sex == \"f\"'"),
    "progress": (None, "A function that is called with the part of the work that is done, 0 to 1; "
                       "True shows a bar of tqdm where that is installed"),
}

TYPES = {
    "flag": "bool",
    "number": "float",
    "text": "str",
    "choice": "str",
    "column": "name of a column",
    "formula": "str",
    "numbers": "list of float",
    "texts": "list of str",
    "columns": "list of names of columns",
}


def default_of(option):
    """What the argument is where it is not given; None also where nothing holds."""
    if option["type"] == "flag":
        return False
    if option["type"] == "choice":
        return option["choices"][0]
    if option["type"] == "number":
        try:
            return float(option.get("default", ""))
        except ValueError:
            return None
    return None


def signature_of(analysis):
    """data, then everything by name, what is required first."""
    kind = inspect.Parameter.KEYWORD_ONLY
    parameters = [inspect.Parameter("data", inspect.Parameter.POSITIONAL_OR_KEYWORD)]
    options = sorted(analysis["options"], key=lambda option: not option["required"])
    for option in options:
        default = inspect.Parameter.empty if option["required"] else default_of(option)
        parameters.append(inspect.Parameter(argument_of(option["name"]), kind, default=default))
    for name, (default, _) in SHARED.items():
        parameters.append(inspect.Parameter(name, kind, default=default))
    return inspect.Signature(parameters)


def help_of(option):
    text = option["help"]
    if "choices" in option:
        text += ": " + ", ".join(repr(choice) for choice in option["choices"])
    if "default" in option:
        text += f" (default {option['default']})"
    return text


def docstring_of(analysis):
    lines = [analysis["summary"] + ".", ""]
    if analysis["details"]:
        lines += [analysis["details"], ""]
    lines += ["Parameters", "----------",
              "data : dict of columns (arrays, lists) or pandas.DataFrame",
              "    Rows with a missing cell in a column asked for are left out and counted."]
    for option in analysis["options"]:
        required = "" if option["required"] else ", optional"
        lines.append(f"{argument_of(option['name'])} : {TYPES[option['type']]}{required}")
        lines.append("    " + help_of(option) + ".")
    for name, (_, text) in SHARED.items():
        lines += [f"{name} : optional", "    " + text + "."]
    lines += ["", "Returns", "-------", "Result",
              "    Tables: " + ", ".join(analysis["tables"]) + "."]
    if analysis["figures"]:
        lines.append("    Figures: " + ", ".join(analysis["figures"]) + ".")
    lines += ["", "Raises", "------", "RefusedInput",
              "    Names the argument, the row, what stands there and what was expected."]
    return in_python("\n".join(lines)) + "\n"


def settings_of(analysis, arguments):
    """The options that differ from their defaults, by their own names."""
    settings = {}
    for option in analysis["options"]:
        value = arguments[argument_of(option["name"])]
        # A default that is passed on would count as a wish.
        if value is None or (np.isscalar(value) and value == default_of(option)):
            continue
        settings[option["name"]] = value
    return settings


def reading_of(arguments):
    """What is said about the data beside the analysis' own options."""
    missing = _data.words_of(arguments["missing"])
    return ({"missing": missing} if missing else {}) \
        | ({} if arguments["where"] is None else {"where": arguments["where"]})


def function_of(analysis, module):
    signature = signature_of(analysis)

    has_formula = any(option["name"] == "formula" for option in analysis["options"])

    def call(*positional, **named):
        # cox("Surv(time, status) ~ age", data) as well as cox(data, formula=...)
        if has_formula and positional and isinstance(positional[0], str):
            named["formula"], positional = positional[0], positional[1:]
        arguments = signature.bind(*positional, **named)
        arguments.apply_defaults()
        arguments = arguments.arguments
        settings = settings_of(analysis, arguments)
        settings |= reading_of(arguments)
        made = _core.Call(analysis["name"], settings)
        table = _data.table_of(arguments["data"])
        columns = table.columns(made.wanted(table.names))
        with _data.telling(arguments["progress"], analysis["name"]) as tell:
            return Result(made.run(str(arguments["data_name"]), table.names, columns, table.rows,
                                   tell))

    call.__name__ = call.__qualname__ = analysis["name"]
    call.__module__ = module
    call.__doc__ = docstring_of(analysis)
    call.__signature__ = signature
    return call


def declared():
    """What `survmeth help --json` prints."""
    return json.loads(_core.declarations())


def analyses():
    return declared()["analyses"]


def made(module):
    """By name, the function of each analysis."""
    return {each["name"]: function_of(each, module) for each in analyses()}
