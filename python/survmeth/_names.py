"""How options are spelled as arguments."""

import keyword
import re


def argument_of(option):
    """event-value: event_value; class: class_."""
    name = option.replace("-", "_")
    return name + "_" if keyword.iskeyword(name) else name


# What a command line calls that which an option expects.
EXPECTED = {"COL,COL": "names of columns", "COL": "the name of a column", "FORMULA": "a formula"}


def sentence_in_python(text):
    """Of a refusal."""
    text = re.sub(r"(?<=expected )(COL,COL|COL|FORMULA)\b", lambda found: EXPECTED[found[0]], text)
    return in_python(text).removesuffix(", separated by commas")


def in_python(text):
    """The wording that all faces share names options as a command line has them."""
    return re.sub(r"--([a-z][a-z-]*)", lambda found: argument_of(found[1]), text)
