"""Holds docs/calling.md, or another PAGE of docs, to what there is.

    page.py ROOT [--page PAGE]                        the blocks of code stand in the examples
    page.py ROOT --run SECTION --libraries FOLDER     the commands of a section print what they say

A block of code has to stand word for word in the file of examples/ that the page linked last. A
block of commands is run by the shell in a folder that looks like the root of a built tree. It has
to print the block of text below it, or without one the whole expected text of the analysis. Ends
with 77 and a message where a section's language is not installed.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

import prints

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\]\(\.\./((?:examples|tests/install)/[^)#]+)\)")
# What a section's commands need besides the interpreter that runs this; Basic's own runner looks
# for the office.
NEEDED = {"R": ["R", "Rscript", "cc"]}


def sections(page):
    """The page's text by the headings of its second level."""
    parts = re.split(r"^## (.+)$", page, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def blocks(text):
    """Language, text and the file linked last before it, of each block."""
    found = []
    for match in BLOCK.finditer(text):
        links = LINK.findall(text[:match.start()])
        found.append((match[1], match[2], links[-1] if links else None))
    return found


def stands_in(block, source):
    wanted = textwrap.dedent(block).splitlines()
    lines = source.splitlines()
    return any(textwrap.dedent("\n".join(lines[k:k + len(wanted)])).splitlines() == wanted
               for k in range(len(lines) - len(wanted) + 1))


def check_blocks(root, page):
    problems, checked = [], 0
    for language, text, link in blocks(page):
        if language in ("sh", "text"):
            continue
        checked += 1
        if link is None or not stands_in(text, (root / link).read_text(encoding="utf-8")):
            problems.append(f"not in {link}:\n{text}")
    print(*problems, sep="\n")
    print(f"{checked} blocks, {len(problems)} of them not in their file")
    return 1 if problems or checked == 0 else 0


def mirror(root, libraries, folder):
    """A folder with what the commands use: sources and data by link, the examples as a copy."""
    for name in ("survival", "data"):
        (folder / name).symlink_to(root / name)
    shutil.copytree(root / "examples", folder / "examples",
                    ignore=shutil.ignore_patterns("*.o", "*.so", "__pycache__"))
    (folder / "build" / "release").mkdir(parents=True)
    (folder / "build" / "release" / "lib").symlink_to(libraries)
    # The interpreter that runs this, under the name that the page uses.
    (folder / "bin").mkdir()
    python = folder / "bin" / "python3"
    python.write_text(f'#!/bin/sh\nexec "{sys.executable}" -B "$@"\n')
    python.chmod(0o755)


def run(root, page, section, libraries):
    absent = [tool for tool in NEEDED.get(section, []) if shutil.which(tool) is None]
    if absent:
        print(f"skipped: {', '.join(absent)} not installed")
        return prints.SKIPPED
    whole = (root / "tests" / "examples" / "lung.txt").read_text(encoding="utf-8")
    found = blocks(sections(page)[section])
    commands = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        mirror(root, libraries, folder)
        environment = dict(os.environ, PATH=f"{folder / 'bin'}:{os.environ['PATH']}")
        for k, (language, text, _) in enumerate(found):
            if language != "sh":
                continue
            commands += 1
            shown = k + 1 < len(found) and found[k + 1][0] == "text"
            result = subprocess.run(["bash", "-e", "-c", text], cwd=folder, env=environment,
                                    capture_output=True, text=True, timeout=300, check=False)
            if result.returncode == prints.SKIPPED:
                print(result.stdout)
                return prints.SKIPPED
            expected = found[k + 1][1] if shown else whole
            if result.returncode != 0 or result.stdout != expected:
                sys.stdout.writelines(prints.differences(expected, result.stdout))
                print(f"exit code {result.returncode}\n{result.stderr}")
                return 1
    print(f"{commands} blocks of commands print what they should")
    return 0 if commands else 1


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("--page", default="calling.md")
    parser.add_argument("--run")
    parser.add_argument("--libraries", type=pathlib.Path)
    options = parser.parse_args()
    page = (options.root / "docs" / options.page).read_text(encoding="utf-8")
    if options.run:
        return run(options.root, page, options.run, options.libraries)
    return check_blocks(options.root, page)


if __name__ == "__main__":
    sys.exit(main())
