"""Runs a program and compares what it prints with a file, byte for byte.

    prints.py [--needs-r-survival] EXPECTED PROGRAM ARGUMENT...

With the option it ends with 77 and a message where R or its package survival is not installed.
"""

import difflib
import pathlib
import shutil
import subprocess
import sys

SKIPPED = 77


def r_survival_missing():
    """What is missing for a script that needs R's survival, or None."""
    if shutil.which("Rscript") is None:
        return "R is not installed"
    found = subprocess.run(["Rscript", "-e", "quit(status = !requireNamespace('survival'))"],
                           capture_output=True, check=False)
    return "R's package survival is not installed" if found.returncode else None


def differences(expected, printed):
    """Lines that tell the texts apart, at most 40; none where they are the same."""
    return list(difflib.unified_diff(expected.splitlines(True), printed.splitlines(True),
                                     "expected", "printed"))[:40]


def main():
    words = sys.argv[1:]
    if words[0] == "--needs-r-survival":
        words = words[1:]
        reason = r_survival_missing()
        if reason:
            print(f"skipped: {reason}")
            return SKIPPED
    result = subprocess.run(words[1:], capture_output=True, timeout=300, check=False)
    sys.stderr.write(result.stderr.decode())
    expected = pathlib.Path(words[0]).read_bytes()
    if expected == result.stdout and result.returncode == 0:
        return 0
    sys.stdout.writelines(differences(expected.decode(), result.stdout.decode()))
    print(f"exit code {result.returncode}")
    return 1


if __name__ == "__main__":
    sys.exit(main())
