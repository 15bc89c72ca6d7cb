"""Runs the macro lung.bas in LibreOffice, without a window, and prints what it wrote.

    python3 run.py DATA LIBRARY

The macro and its shim are laid into a user profile of their own, which is removed afterwards.
Ends with 77 and a message where LibreOffice, its Basic or its Python is not installed.
"""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
from xml.sax.saxutils import escape

HERE = pathlib.Path(__file__).resolve().parent
SKIPPED = 77
SECONDS = 120

XML = '<?xml version="1.0" encoding="UTF-8"?>\n'
LIBRARY = XML + """<!DOCTYPE library:library PUBLIC "-//OpenOffice.org//DTD OfficeDocument 1.0//EN" "library.dtd">
<library:library xmlns:library="http://openoffice.org/2000/library" library:name="Standard" library:readonly="false" library:passwordprotected="false">
 <library:element library:name="Lung"/>
</library:library>
"""
MODULE = XML + """<!DOCTYPE script:module PUBLIC "-//OpenOffice.org//DTD OfficeDocument 1.0//EN" "module.dtd">
<script:module xmlns:script="http://openoffice.org/2000/script" script:name="Lung" script:language="StarBasic">{source}</script:module>
"""


def missing():
    """What this machine lacks, or None."""
    office = shutil.which("soffice")
    if office is None:
        return "LibreOffice (soffice) is not installed"
    program = pathlib.Path(office).resolve().parent
    if not (program / "libscriptframe.so").exists():
        return "LibreOffice's macro support is not installed"
    if not (program / "pythonscript.py").exists():
        return "LibreOffice's Python script provider is not installed"
    return None


def lay_out(profile):
    """Puts the macro into the profile as Standard.Lung and the shim beside it as a script."""
    standard, scripts = (profile / "user" / folder for folder in ("basic/Standard",
                                                                  "Scripts/python"))
    scripts.mkdir(parents=True, exist_ok=True)
    (standard / "script.xlb").write_text(LIBRARY)
    source = (HERE / "lung.bas").read_text(encoding="utf-8")
    (standard / "Lung.xba").write_text(MODULE.format(source=escape(source)))
    shutil.copy(HERE / "survival_shim.py", scripts)


def office(profile, environment, *words):
    """Runs the office to its end; returns what it said."""
    process = subprocess.Popen(
        ["soffice", "--headless", "--norestore", f"-env:UserInstallation={profile.as_uri()}",
         *words], env=environment, start_new_session=True, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, text=True)
    try:
        return process.communicate(timeout=SECONDS)[0]
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)  # the group that was started above
        return process.communicate()[0] + f"ended after {SECONDS} seconds\n"


def run(data, library, folder):
    """Runs the macro; returns what it wrote."""
    profile, output = folder / "profile", folder / "output.txt"
    environment = dict(os.environ, LC_ALL="C.UTF-8", SURVMETH_DATA=data,
                       SURVMETH_LIBRARY=library, SURVMETH_OUTPUT=str(output))
    # The office lays out a new profile itself, over what would already stand there.
    said = office(profile, environment, "--terminate_after_init")
    lay_out(profile)
    said += office(profile, environment, "macro:///Standard.Lung.Main")
    if not output.exists():
        sys.exit(f"the macro wrote nothing\n{said}")
    return output.read_text(encoding="utf-8")


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: run.py DATA LIBRARY")
    reason = missing()
    if reason:
        print(f"skipped: {reason}")
        sys.exit(SKIPPED)
    data, library = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:])
    with tempfile.TemporaryDirectory() as folder:
        text = run(data, library, pathlib.Path(folder))
    sys.stdout.write(text)
    if any(line.startswith(("failed", "refused")) for line in text.splitlines()):
        sys.exit(1)


if __name__ == "__main__":
    main()
