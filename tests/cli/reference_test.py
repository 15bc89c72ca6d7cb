#!/usr/bin/env python3
"""The pages of docs/reference are what `survmeth help` prints, one for each command, and no others.

    reference_test.py PROGRAM DOCS
"""

import json
import pathlib
import subprocess
import sys


def printed(program, *arguments):
    return subprocess.run([program, "help", *arguments], capture_output=True, check=True,
                          encoding="utf-8").stdout


def main():
    program, docs = sys.argv[1], pathlib.Path(sys.argv[2])
    names = [each["name"] for each in json.loads(printed(program, "--json"))["analyses"]]
    problems = [] if names else ["there is no analysis"]
    names += ["predict", "run", "selftest"]
    for name in names:
        page = docs / f"{name}.md"
        if not page.exists() or page.read_text(encoding="utf-8") != printed(program, name):
            problems.append(f"{page.name} is not what survmeth help {name} prints")
    for page in sorted(docs.glob("*.md")):
        if page.stem not in names:
            problems.append(f"{page.name} is the page of no command")
    print("\n".join(problems) or f"{len(names)} pages")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
