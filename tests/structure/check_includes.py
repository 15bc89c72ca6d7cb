"""Reads the includes of every source and reports those that go against the tree's one direction.

    check_includes.py ROOT

RULES names for each folder what it may include besides itself; a folder with sources that it does
not name is reported. tests/ and bench/ may include anything. What is statistics includes nothing
from outside but the standard library. The table of docs/architecture.md is held against the rules
and against what the sources include. Ends with 1 when anything is reported.
"""

import pathlib
import re
import sys

# What a folder, or a file or folder in it with a rule of its own, may include: folders, or files
# and folders in them. A rule may stand before its folder does.
RULES = {
    "numerics": [],
    "Dist": ["numerics"],
    "Klikro": ["numerics"],
    "solver": ["Klikro", "numerics"],
    "survival": ["Klikro", "solver", "Dist", "numerics"],
    "engine/input.h": [],
    "engine": ["numerics", "Dist"],
    "text": [],
    "frame": ["numerics", "text"],
    "model": ["frame", "engine/input.h", "numerics", "text"],
    "procedures": ["model", "engine", "numerics", "Dist"],
    "report": ["text"],
    "analysis": ["report", "text", "model", "frame", "engine", "procedures", "numerics", "Dist/Dist",
                 "survival/survival.h", "survival/calls"],
    "pictures": ["report", "text"],
    "cli": ["analysis", "report", "pictures", "frame", "text", "numerics/progress.h"],
    "python": ["analysis", "report", "frame", "text", "numerics/progress.h"],
    "web": ["analysis", "report", "frame", "numerics/progress.h"],
    "examples": ["survival/survival.h"],
    "examples/cpp": ["analysis", "report", "model", "frame", "engine", "numerics/progress.h"],
    "bench": None,
    "tests": None,
}
FOLDERS = {rule.split("/")[0] for rule in RULES}
STATISTICS = {"numerics", "Dist", "Klikro", "solver", "survival", "engine", "model", "procedures"}

# The system's headers, each for the one file that says why it cannot do without.
SYSTEM = {"numerics/largeArray.cpp": "sys/mman.h"}

# A header of the C++ standard library, or one of C's for declarations that C reads too.
STANDARD = re.compile(r"\w+|(float|limits|math|stdbool|stddef|stdint|wchar)\.h")

# What is compiled for browsers does without these, which Emscripten's standard library on Debian 12
# has not; numerics/bits.h says what stands for the first.
BROWSERS = {"numerics", "Dist", "Klikro", "solver", "survival", "engine", "text", "frame", "model",
            "procedures", "report", "analysis", "web"}
LACKING = re.compile(r"^(?!\s*//).*?\bstd::(bit_cast|ranges|views|format|jthread)\b", re.MULTILINE)

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
SUFFIXES = {".c", ".cc", ".cpp", ".h", ".hpp", ".inc"}

PAGE = "docs/architecture.md"
ROW = re.compile(r"^\| `([^`]+)` \| ([^|]+) \|", re.MULTILINE)


def sources(folder):
    """The C and C++ files of a folder; the chief headers have no suffix."""
    return sorted(path for path in folder.rglob("*")
                  if path.is_file() and path.suffix in SUFFIXES | {""})


def rule_of(path):
    """The rule that a file follows: one of its own, or its folder's, the innermost that has one."""
    places = [path, *map(str, pathlib.PurePosixPath(path).parents)]
    return next(place for place in places if place in RULES)


def covers(entry, path):
    return path == entry or path.startswith(entry + "/")


def refusal(root, path, quote, include):
    """Why the source at `path` may not have this include, or None."""
    rule, target = rule_of(path), include.split("/")[0]
    beside = (root / path).parent / include
    if quote == '"' and target not in FOLDERS and beside.is_file():
        return "goes up by a relative path" if ".." in pathlib.PurePath(include).parts else None
    if target in FOLDERS and "/" in include:
        entries = [entry for entry in RULES[rule] + [rule] if entry.split("/")[0] == target]
        if any(covers(entry, include) for entry in entries):
            return None
        if not entries or entries == [rule]:
            return f"{rule} does not know {target}"
        return f"{rule} knows of {target} only {', '.join(entries)}"
    if path.split("/")[0] in STATISTICS and SYSTEM.get(path) != include and (
            quote == '"' or not STANDARD.fullmatch(include)):
        return f"{path.split('/')[0]} uses nothing but the standard library"
    return None


def includes(root):
    """For every source that a rule binds, by its path: line, quote and file of its includes."""
    found = {}
    for folder in sorted(FOLDERS):
        if RULES.get(folder) is None:
            continue
        for source in sources(root / folder):
            text = source.read_text(encoding="utf-8")
            found[source.relative_to(root).as_posix()] = [
                (text.count("\n", 0, match.start(2)) + 1, *match.groups())
                for match in INCLUDE.finditer(text)]
    return found


def strangers(root):
    """One line for each folder with sources that no rule names, and each source outside folders."""
    reports = []
    for path in sorted(root.iterdir()):
        if path.is_file() and path.suffix in SUFFIXES:
            reports.append(f"{path.name}: a source outside the folders")
        if path.name in FOLDERS | {"build"} or path.name.startswith(".") or not path.is_dir():
            continue
        if any(source.suffix or INCLUDE.search(source.read_text(encoding="utf-8", errors="replace"))
               for source in sources(path)):
            reports.append(f"{path.name}: no rule for this folder")
    return reports


def lacking(root):
    """One line for each use of what browsers' builds have not."""
    reports = []
    for folder in sorted(BROWSERS):
        for source in sources(root / folder):
            text = source.read_text(encoding="utf-8")
            path = source.relative_to(root).as_posix()
            reports += [f"{path}:{text.count(chr(10), 0, match.start(1)) + 1}: std::{match[1]}: "
                        "Emscripten's standard library lacks it" for match in LACKING.finditer(text)]
    return reports


def check(root):
    """One line for each thing against the rules, and how many sources were read."""
    found, reports = includes(root), strangers(root) + lacking(root)
    for path, includes_of_one in found.items():
        for line, quote, include in includes_of_one:
            why = refusal(root, path, quote, include)
            if why:
                reports.append(f"{path}:{line}: {include}: {why}")
    return reports, len(found)


def check_table(root):
    """One line for each place where the page's table is not what the tree is."""
    used = {}
    for path, includes_of_one in includes(root).items():
        used.setdefault(rule_of(path), set()).update(
            entry for entry in RULES[rule_of(path)] for _, _, include in includes_of_one
            if covers(entry, include))
    rows = {name.rstrip("/"): knows
            for name, knows in ROW.findall((root / PAGE).read_text(encoding="utf-8"))}
    reports = []
    for rule in RULES:
        name = rule if "." in rule else rule + "/"
        if rule not in used:
            if rule in rows:
                reports.append(f"{PAGE}: a row for {name}, which has no sources")
            continue
        if rule not in rows:
            reports.append(f"{PAGE}: no row for {name}")
            continue
        named = set() if rows[rule] == "nobody" else set(rows[rule].replace("`", "").split(", "))
        reports += [f"{PAGE}: the row of {name} lacks {entry}"
                    for entry in sorted(used[rule] - named)]
        reports += [f"{PAGE}: the row of {name} names {entry}, which the rules do not"
                    for entry in sorted(named - set(RULES[rule]))]
    return reports


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    reports, read = check(root)
    reports += check_table(root)
    for report in reports:
        print(report)
    print(f"{read} sources read, {len(reports)} reports")
    return 1 if reports or read == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
