"""Writes the types of the package's functions, made from the declarations.

    interface.py MODULE FILE     the built module _core; __init__.pyi

Takes nothing but Python, because a wheel is built without what the package needs.
"""

import importlib.util
import json
import pathlib
import sys


def loaded(name, path):
    spec = importlib.util.spec_from_file_location(name, path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


HERE = pathlib.Path(__file__).resolve().parent
declared = loaded("_declared", HERE / "survmeth" / "_declared.py")
argument_of = loaded("_names", HERE / "survmeth" / "_names.py").argument_of

HEAD = '''# Written by interface.py from the declarations.
from collections.abc import Callable, Iterable
from typing import Any, Literal, overload

from survmeth._errors import RefusedInput as RefusedInput
from survmeth._result import Result as Result

__version__: str
__all__: list[str]
'''

TYPES = {
    "flag": "bool",
    "number": "float",
    "text": "str | float",
    "column": "str",
    "formula": "str",
    "numbers": "float | Iterable[float]",
    "texts": "str | float | Iterable[str | float]",
    "columns": "str | Iterable[str]",
    "data": "Any",
}

SHARED = {
    "data_name": "str = 'data'",
    "missing": "str | float | Iterable[str | float] | None = None",
    "where": "str | None = None",
    "progress": "Callable[[float], object] | bool | None = None",
}


def type_of(option):
    if option["type"] == "choice":
        return "Literal[" + ", ".join(map(repr, option["choices"])) + "]"
    return TYPES[option["type"]]


def parameter_of(option):
    name, kind = argument_of(option["name"]), type_of(option)
    if option["required"]:
        return f"{name}: {kind}"
    default = declared.default_of(option)
    return f"{name}: {kind}{' | None' if default is None else ''} = {default!r}"


def function_of(analysis):
    options = sorted(analysis["options"], key=lambda option: not option["required"])
    assert list(SHARED) == list(declared.SHARED)
    named = [parameter_of(option) for option in options]
    named += [f"{name}_name: str = {name!r}" for name in declared.names_of_data(analysis)]
    named += [f"{name}: {kind}" for name, kind in SHARED.items()]

    def lines(first, by_name):
        parameters = "".join(f"    {each},\n" for each in [*first, "*", *by_name])
        return f"def {analysis['name']}(\n{parameters}) -> Result: ...\n"

    if not any(option["name"] == "formula" for option in options):
        return lines(["data: Any"], named)
    others = [each for each in named if not each.startswith("formula:")]
    return ("@overload\n" + lines(["data: Any"], named)
            + "@overload\n" + lines(["formula: str", "data: Any"], others))


def main():
    core = loaded("_core", sys.argv[1])
    analyses = json.loads(core.declarations())["analyses"]
    text = HEAD + "".join("\n" + function_of(each) for each in analyses)
    pathlib.Path(sys.argv[2]).write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
