#!/usr/bin/env python3
"""Runs one command-line case and compares everything that the program did with what is written down.

A case is a folder that holds
  arguments     the arguments as a shell would read them; lines are joined
  input/        files that the program finds in its working folder, beside data/ (optional)
  stdin         what it reads from standard input (optional)
  environment   KEY=VALUE lines (optional)
  stdout        exactly what it writes there (absent: nothing)
  stderr        likewise
  exit          the exit code (absent: 0)
  files/        every file that it leaves behind, exactly (absent: none)
  contains      lines "name: text" for files that are not compared byte by byte, such as pictures:
                each such file must be left behind and hold the text
@VERSION@ in stdout, stderr and files stands for the program's version.
"""

import argparse
import difflib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile


def read(path, version):
    return path.read_bytes().replace(b"@VERSION@", version.encode()) if path.exists() else b""


def files_below(folder):
    return {
        str(path.relative_to(folder)): path.read_bytes()
        for path in sorted(folder.rglob("*"))
        if path.is_file()
    }


def difference(what, expected, actual):
    if expected == actual:
        return []
    lines = difflib.unified_diff(
        expected.decode("utf-8", "replace").splitlines(),
        actual.decode("utf-8", "replace").splitlines(),
        f"{what} expected",
        what,
        lineterm="",
    )
    return list(lines) or [f"{what} differs in line ends or bytes that are not text"]


def left_behind(case, work, version):
    """What the program wrote against files/ and contains."""
    problems = []
    inputs = files_below(case / "input") if (case / "input").is_dir() else {}
    left = {name: data for name, data in files_below(work).items() if inputs.get(name) != data}
    held = set()
    contains = case / "contains"
    if contains.exists():
        for line in contains.read_text().splitlines():
            name, text = line.split(": ", 1)
            held.add(name)
            if text.encode() not in left.get(name, b""):
                problems.append(f"{name} is not there or does not hold {text!r}")
    left = {name: data for name, data in left.items() if name not in held}
    wanted = files_below(case / "files") if (case / "files").is_dir() else {}
    for name in sorted(wanted.keys() - left.keys()):
        problems.append(f"{name} was not written")
    for name in sorted(left.keys() - wanted.keys()):
        problems.append(f"{name} was written or changed")
    for name in sorted(left.keys() & wanted.keys()):
        expected = wanted[name].replace(b"@VERSION@", version.encode())
        problems += difference(name, expected, left[name])
    for name in inputs:
        if not (work / name).is_file():
            problems.append(f"{name} is gone")
    return problems


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("case", type=pathlib.Path)
    options = parser.parse_args()
    case = options.case

    environment = dict(os.environ, LC_ALL="C.UTF-8")
    if (case / "environment").exists():
        for line in (case / "environment").read_text().splitlines():
            key, value = line.split("=", 1)
            environment[key] = value
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder) / "work"
        if (case / "input").is_dir():
            shutil.copytree(case / "input", work)
        else:
            work.mkdir()
        (work / "data").symlink_to(options.data, target_is_directory=True)
        result = subprocess.run(
            [options.program] + shlex.split((case / "arguments").read_text()),
            input=read(case / "stdin", ""),
            capture_output=True,
            cwd=work,
            env=environment,
            timeout=120,
            check=False,
        )
        (work / "data").unlink()
        problems = left_behind(case, work, options.version)
    exit_code = int((case / "exit").read_text()) if (case / "exit").exists() else 0
    if result.returncode != exit_code:
        problems.append(f"exit code {result.returncode}, expected {exit_code}")
    problems += difference("stdout", read(case / "stdout", options.version), result.stdout)
    problems += difference("stderr", read(case / "stderr", options.version), result.stderr)
    if problems:
        print("\n".join(problems))
        sys.exit(1)


if __name__ == "__main__":
    main()
