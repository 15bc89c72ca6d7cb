"""How options are spelled as arguments."""

import keyword
import re


def argument_of(option):
    """event-value: event_value; class: class_."""
    name = option.replace("-", "_")
    return name + "_" if keyword.iskeyword(name) else name


def in_python(text):
    """The wording that all faces share names options as a command line has them."""
    return re.sub(r"--([a-z][a-z-]*)", lambda found: argument_of(found[1]), text)
