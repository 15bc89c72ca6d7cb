"""What arguments the declarations come to. Imports nothing: interface.py reads it alone."""

# What every function takes besides the options of its analysis.
SHARED = {
    "data_name": ("data", "What reports call the data"),
    "missing": (None, "What is missing besides None, NaN, NA and empty texts: a list of labels or "
                      "numbers"),
    "where": (None, "Take only the rows that meet this condition, as in 'age > 40 & sex == \"f\"'"),
    "progress": (None, "A function that is called with the part of the work that is done, 0 to 1; "
                       "True shows a bar of tqdm where that is installed, as notebooks do by "
                       "themselves where a run takes more than a second; False: none"),
}


def names_of_data(analysis):
    """The arguments that take data beside the first; each has another for what reports call them."""
    return [option["name"] for option in analysis["options"] if option["type"] == "data"]


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
