"""Reads the sources that results come from and reports what makes a result differ between machines.

    check_sources.py ROOT COMMANDS

Comments and strings are passed over. COMMANDS is a build's compile_commands.json: each of these
sources has to be compiled without fused operations, and none with arithmetic that is reassociated.
Ends with 1 when anything is reported.
"""

import json
import pathlib
import re
import sys

from check_includes import sources

FOLDERS = ["numerics", "Dist", "Klikro", "solver", "survival", "engine", "procedures", "text",
           "frame", "model", "report", "analysis"]

# What may not stand in a source, and why.
FORBIDDEN = {
    r"\w+_distribution\b": "standard libraries draw differently from one generator",
    r"std::(?:random_)?shuffle\b": "standard libraries shuffle differently",
    r"std::(?:transform_)?reduce\b": "sums in an order of its own",
    r"std::execution\b": "sums in an order of its own",
    r"std::complex\b": "its functions round as the system's do",
    r"\bhypot[fl]?\s*\(": "rounds as the system's does",
    r"\b(?:std::)?fma\s*\(": "is emulated, and slow, where the processor has none",
    r"\blong double\b": "has 53, 64 or 113 bits",
    r"(?<!\blong )\blong\b(?!\s+(?:long|double)\b)": "has 32 or 64 bits",
    r"\b(?:std::)?(?:strto(?:d|f|ld)|atof|sto(?:d|f|ld))\s*\(": "reads as the locale says",
    r"\b(?:std::)?v?(?:f|s|sn|as)?w?(?:printf|scanf)\s*\(": "writes and reads as the locale says",
    r"\b(?:std::)?w?[io]?stringstream\b": "writes and reads as the locale says",
    r"\bsetlocale\s*\(": "changes what others write and read",
    r"\b(?:std::)?s?rand\s*\(|\brandom_device\b": "draws differently each time",
    r"\bvector_size\b[^;]*\baligned\s*\(": "behind a reference compilers take it for aligned",
    r"\bunordered_(?:multi)?(?:map|set)\b": "goes through its elements in an order of its own",
}

# Containers that are looked up in and never gone through.
LOOKED_UP = {"frame/intern.h", "frame/labels.cpp", "frame/sink.cpp",
             "survival/cuminc/CheckStatusFormat.cpp"}

# Sorts that leave equal elements in an order of the library's own, and how many arguments they have
# before a comparison.
UNSTABLE = {"sort": 2, "partial_sort": 3, "nth_element": 3}
# Where such a sort has a comparison of its own: it tells any two elements apart, or what it does not
# tell apart is the same in every bit.
TOTAL = {
    "Klikro/order.h": "row numbers last",
    "analysis/cox/subjects.cpp": "row numbers last",
    "analysis/life/fewer.cpp": "row numbers last",
    "analysis/states/stays.cpp": "the spelling last",
    "frame/labels.cpp": "the spelling last",
    "survival/exports/apart.cpp": "sorted again by place",
    "survival/methcomp/orderStatistics.cpp": "numbers of one rank have the same bits",
}

PASSED_OVER = re.compile(
    r'//[^\n]*|/\*.*?\*/|^[ \t]*#[ \t]*include[^\n]*|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
    r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'", re.DOTALL | re.MULTILINE)


def code(text):
    """The text without comments, strings and includes, line for line."""
    return PASSED_OVER.sub(lambda match: "\n" * match.group().count("\n"), text)


def reports(path, text):
    """What is to be said of a source: line, what stands there, and why it may not."""
    found = []
    for number, line in enumerate(code(text).split("\n"), 1):
        for pattern, why in FORBIDDEN.items():
            match = re.search(pattern, line)
            if match is None or ("unordered_" in match.group() and path in LOOKED_UP):
                continue
            found.append((number, match.group().strip(), why))
    return found


def arguments(text):
    """How many arguments a call has whose parenthesis `text` stands behind, the last of them too."""
    depth, count, last = 0, 1, ""
    for character in text:
        if character in "([{":
            depth += 1
        elif character in ")]}":
            if depth == 0:
                break
            depth -= 1
        if character == "," and depth == 0:
            count, last = count + 1, ""
        else:
            last += character
    return count, last.strip()


def unstable(path, text):
    """Lines of the sorts whose order of equal elements is the library's and may be seen."""
    text, found = code(text), []
    for match in re.finditer(r"std::(?:ranges::)?(sort|partial_sort|nth_element)\s*\(", text):
        count, last = arguments(text[match.end():])
        own = "ranges" in match.group() or count > UNSTABLE[match.group(1)]
        if own and not last.startswith(("std::greater<", "std::less<")) and path not in TOTAL:
            found.append((text.count("\n", 0, match.start()) + 1, match.group().rstrip("( "),
                          "leaves equal elements as the library likes"))
    return found


SIZED = re.compile(r"(?:\.(?:resize|assign|reserve)|\bvector<[^;()]*>(?: \w+)?|[vV]alues_?)\(([^;]*)")
PRODUCT = re.compile(r"[A-Za-z_0-9)\]] \* [A-Za-z_(]")
CONSTANT = re.compile(r"\b(?:k[A-Z]\w*|\d+U?) \* | \* (?:k[A-Z]\w*|\d+U?)\b")


def wrapping(text):
    """Lines that make an array of a product of two sizes, which 32 bits may not hold."""
    return [(number, "a product of sizes", "may exceed a word; numerics::product tells")
            for number, line in enumerate(code(text).split("\n"), 1)
            for match in [SIZED.search(line)]
            if match and PRODUCT.search(CONSTANT.sub("", match.group(1)))]


def loose(command):
    """What lets the compiler of this command change a result, or None."""
    words = command.split()
    contract = [word for word in words if word.startswith("-ffp-contract=")]
    if contract[-1:] != ["-ffp-contract=off"]:
        return "fused operations are not switched off"
    for word in words:
        if word in ("-ffast-math", "-Ofast", "-funsafe-math-optimizations", "-fassociative-math",
                    "-freciprocal-math"):
            return f"{word} changes results"
    return None


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    read = said = 0
    compiled = 0
    for entry in json.loads(pathlib.Path(sys.argv[2]).read_text(encoding="utf-8")):
        source = pathlib.Path(entry["directory"], entry["file"]).resolve()
        if not source.is_relative_to(root):
            continue
        path = source.relative_to(root)
        if path.parts[0] not in FOLDERS:
            continue
        compiled += 1
        if why := loose(entry["command"]):
            print(f"{path.as_posix()}: {why}")
            said += 1
    for folder in FOLDERS:
        for source in sources(root / folder):
            read += 1
            path = source.relative_to(root).as_posix()
            text = source.read_text(encoding="utf-8")
            found = reports(path, text) + unstable(path, text)
            if path.split("/")[0] in ("numerics", "engine", "procedures"):
                found += wrapping(text)
            for number, what, why in found:
                print(f"{path}:{number}: {what} {why}")
                said += 1
    print(f"{read} sources read, {compiled} compiled, {said} reports")
    return 1 if said or read == 0 or compiled == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
