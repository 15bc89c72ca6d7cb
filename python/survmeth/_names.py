"""How options are spelled as arguments."""

import keyword
import re


def argument_of(option):
    """event-value: event_value; class: class_."""
    name = option.replace("-", "_")
    return name + "_" if keyword.iskeyword(name) else name


# What a command line calls that which an option expects.
EXPECTED = {
    "COL,COL": "names of columns", "COL": "the name of a column", "FORMULA": "a formula",
    "A,B,C": "numbers", "P,Q": "numbers", "TP,FP,FN,TN": "numbers",
    "A,B": "texts", "V,W,...": "labels", "TERM,TERM": "texts", "COL=LEVEL": "texts COL=LEVEL",
    "CODE": "a label", "LABEL": "a label", "STATE": "a label"}
PLACEHOLDER = re.compile(f"(?<=expected )({'|'.join(map(re.escape, EXPECTED))})(?=$|[ ,])")


def sentence_in_python(text):
    """Of a refusal."""
    text = PLACEHOLDER.sub(lambda found: EXPECTED[found[0]], text)
    return in_python(text).removesuffix(", separated by commas")


def in_python(text):
    """The wording that all faces share names options as a command line has them."""
    return re.sub(r"--([a-z][a-z-]*)", lambda found: argument_of(found[1]), text)
