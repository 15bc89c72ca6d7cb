"""Reads the includes of every source and reports those that go against the tree's one direction.

    check_includes.py ROOT

Each folder knows the folders that RULES names for it and itself; a rule that names files admits
just those. tests/ and bench/ may include anything. The libraries include nothing from outside but
the standard library. Ends with 1 when an include is reported.
"""

import pathlib
import re
import sys

ANY = re.compile(".*")
# What a folder may include from the others.
RULES = {
    "Klikro": {},
    "Dist": {},
    "solver": {"Klikro": ANY},
    "survival": {"Klikro": ANY, "Dist": ANY, "solver": ANY},
    "analysis": {
        "survival": re.compile(r"survival/survival\.h|survival/calls/\w+\.h"),
        "Dist": re.compile(r"Dist/Dist"),
    },
    "cli": {"analysis": ANY},
    "examples": {"survival": re.compile(r"survival/survival\.h")},
    "bench": None,
    "tests": None,
}
LIBRARIES = {"Klikro", "Dist", "solver", "survival"}

# A header of the C++ standard library, or one of C's for declarations that C reads too.
STANDARD = re.compile(r"\w+|(float|limits|math|stdbool|stddef|stdint|wchar)\.h")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
SOURCES = {"", ".c", ".cpp", ".h", ".hpp"}


def sources(folder):
    """The C and C++ files of a folder; the chief headers have no suffix."""
    return sorted(path for path in folder.rglob("*")
                  if path.is_file() and path.suffix in SOURCES)


def refusal(folder, source, quote, include):
    """Why `source` of the top folder `folder` may not have this include, or None."""
    target = include.split("/")[0]
    if quote == '"' and target not in RULES and (source.parent / include).is_file():
        if ".." in pathlib.PurePath(include).parts:
            return "goes up by a relative path"
        return None
    if target in RULES and "/" in include:
        if target == folder:
            return None
        allowed = RULES[folder].get(target)
        if allowed is None:
            return f"{folder} does not know {target}"
        if not allowed.fullmatch(include):
            return f"{folder} knows {target} only by its chief headers"
        return None
    if folder in LIBRARIES and (quote == '"' or not STANDARD.fullmatch(include)):
        return f"{folder} uses nothing but the standard library"
    return None


def check(root):
    """One line for each include against the rules, and how many sources were read."""
    reports, read = [], 0
    for folder, rules in RULES.items():
        if rules is None:
            continue
        for source in sources(root / folder):
            read += 1
            text = source.read_text(encoding="utf-8")
            for match in INCLUDE.finditer(text):
                why = refusal(folder, source, *match.groups())
                if why:
                    line = text.count("\n", 0, match.start(2)) + 1
                    reports.append(f"{source.relative_to(root)}:{line}: {match[2]}: {why}")
    return reports, read


def main():
    reports, read = check(pathlib.Path(sys.argv[1]).resolve())
    for report in reports:
        print(report)
    print(f"{read} sources read, {len(reports)} includes against the rules")
    return 1 if reports or read == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
