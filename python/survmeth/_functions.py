"""The functions that a person calls, made from the declarations of the analyses."""

import inspect
import json

import numpy as np

from survmeth import _core, _data, _progress
from survmeth._declared import SHARED, default_of, names_of_data
from survmeth._docstrings import docstring_of
from survmeth._errors import RefusedInput
from survmeth._names import argument_of
from survmeth._result import Result


def signature_of(analysis):
    """data, then everything by name, what is required first."""
    kind = inspect.Parameter.KEYWORD_ONLY
    parameters = [inspect.Parameter("data", inspect.Parameter.POSITIONAL_OR_KEYWORD)]
    options = sorted(analysis["options"], key=lambda option: not option["required"])
    for option in options:
        default = inspect.Parameter.empty if option["required"] else default_of(option)
        parameters.append(inspect.Parameter(argument_of(option["name"]), kind, default=default))
    for name in names_of_data(analysis):
        parameters.append(inspect.Parameter(name + "_name", kind, default=name))
    for name, (default, _) in SHARED.items():
        parameters.append(inspect.Parameter(name, kind, default=default))
    return inspect.Signature(parameters)


def defaults_of(signature):
    return {name: parameter.default for name, parameter in signature.parameters.items()
            if parameter.default is not inspect.Parameter.empty}


def settings_of(options, arguments):
    """The options (with their arguments and defaults) that differ from these, by their own names."""
    settings = {}
    for option, argument, default in options:
        value = arguments[argument]
        # A default that is passed on would count as a wish.
        if value is None or value is default:
            continue
        if option["type"] == "data":
            value = str(arguments[option["name"] + "_name"])
        if np.isscalar(value) and value == default:
            continue
        settings[option["name"]] = named_of(option, value)
    return settings


COLUMNS = {"column": "the name of a column of data", "columns": "names of columns of data"}


def is_column(value):
    return hasattr(value, "__len__") and not isinstance(value, (str, tuple)) and len(value) != 1


def named_of(option, value):
    """Columns that are named by numbers or tuples, as of a MultiIndex, by their text."""
    expected = COLUMNS.get(option["type"])
    # A column itself, as other packages take it; a list of one name is such a name.
    if expected and (hasattr(value, "columns") or option["type"] != "columns" and is_column(value)):
        raise RefusedInput(option["name"], None, None, f"the value is a {type(value).__name__}",
                           expected)
    if option["type"] == "column" and isinstance(value, (int, tuple, np.integer)):
        return str(value)
    if option["type"] == "columns" and isinstance(value, list):
        return [str(each) if isinstance(each, (int, tuple, np.integer)) else each
                for each in value]
    return value


def reading_of(arguments):
    """What is said about the data beside the analysis' own options."""
    missing = _data.words_of(arguments["missing"])
    return ({"missing": missing} if missing else {}) \
        | ({} if arguments["where"] is None else {"where": arguments["where"]})


def give_new(made, names, name, arguments):
    """Hands over data beside the first, with the columns that may be asked for."""
    try:
        new = _data.table_of(arguments[name])
        columns = new.columns(made.wanted_of_new(names, new.names))
    except RefusedInput as bad:
        if bad.argument != "data":
            raise
        raise RefusedInput(name, *bad._parts[1:]) from None
    made.give_new(str(arguments[name + "_name"]), new.names, columns, new.rows)


def runner_of(analysis):
    """What makes a call of bound arguments; `start` takes the settings."""
    options = [(option, argument_of(option["name"]), default_of(option))
               for option in analysis["options"]]

    def run(arguments, start):
        made = start(settings_of(options, arguments) | reading_of(arguments))
        table = _data.table_of(arguments["data"])
        columns = table.columns(made.wanted(table.names))
        for name in names_of_data(analysis):
            if arguments[name] is not None:
                give_new(made, table.names, name, arguments)
        with _progress.telling(arguments["progress"], analysis["name"]) as tell:
            return Result(made.run(str(arguments["data_name"]), table.names, columns, table.rows,
                                   tell))

    return run


def bound(name, signature, defaults, positional, named):
    """The arguments by their names. Signature.bind, which takes its time, says what is wrong."""
    data = {"data": positional[0]} if positional else {}
    arguments = defaults | named | data
    if (len(positional) == len(data) and data.keys().isdisjoint(named)
            and arguments.keys() == signature.parameters.keys()):
        return arguments
    try:
        arguments = signature.bind(*positional, **named)
    except TypeError as wrong:
        unknown = next((each for each in named if each not in signature.parameters), None)
        import difflib  # takes a millisecond, which only this needs

        near = difflib.get_close_matches(unknown or "", signature.parameters, 1)
        hint = f"; did you mean {near[0]!r}?" if near else ""
        if len(positional) > 1:
            first = "a formula and data" if "formula" in signature.parameters else "data"
            wrong, hint = f"takes {first} without a name", "; give the rest by name, as alpha=0.1"
        raise TypeError(f"{name}() {wrong}{hint}") from None
    arguments.apply_defaults()
    return arguments.arguments


def is_formula(first, *others, **named):
    """Whether the first is a formula: not so a file that was meant for data."""
    return isinstance(first, str) and (bool(others) or "data" in named or "~" in first)


def function_of(analysis, module):
    signature, run = signature_of(analysis), runner_of(analysis)
    defaults = defaults_of(signature)

    has_formula = any(option["name"] == "formula" for option in analysis["options"])

    def call(*positional, **named):
        # cox("Surv(time, status) ~ age", data) as well as cox(data, formula=...)
        if has_formula and positional and is_formula(*positional, **named):
            named["formula"], positional = positional[0], positional[1:]
        return run(bound(analysis["name"], signature, defaults, positional, named),
                   lambda settings: _core.Call(analysis["name"], settings))

    call.__name__ = call.__qualname__ = analysis["name"]
    call.__module__ = module
    call.__doc__ = docstring_of(analysis)
    call.__signature__ = signature
    return call


def follow_up_of(analysis, of):
    """The method of results of the analysis `of` that follows from them."""
    signature, run = signature_of(analysis), runner_of(analysis)
    defaults = defaults_of(signature)

    def predict(self, *positional, **named):
        return run(bound("predict", signature, defaults, positional, named),
                   lambda settings: _core.Call(self._fit, settings))

    predict.__doc__ = docstring_of(analysis, of)
    predict.__signature__ = signature.replace(parameters=[
        inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY),
        *signature.parameters.values()])
    return predict


def declared():
    """What `survmeth help --json` prints."""
    return json.loads(_core.declarations())


def analyses():
    return declared()["analyses"]


def made(module):
    """By name, the function of each analysis."""
    for each in analyses():
        if "predict" in each:
            Result._follow_ups[each["name"]] = follow_up_of(each["predict"], each["name"])
    return {each["name"]: function_of(each, module) for each in analyses()}
