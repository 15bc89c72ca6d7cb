"""An empty folder with a small data set in it, and the program run there."""

import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

TRIAL = "t,e,x\n1,1,0.5\n2,0,1.5\n3,1,2.5\n4,1,0.25\n5,0,1\n6,1,3\n7,1,0.75\n8,0,2\n"
COX = ["cox", "trial.csv", "--time", "t", "--event", "e", "--covariates", "x"]
LIFE = ["life", "trial.csv", "--time", "t", "--event", "e"]
BASELINE_HEAD = "stratum,time,"
PATIENCE = 30  # seconds until a program that ought to have ended is taken for stuck


class Folder(unittest.TestCase):
    program = None

    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        (self.folder / "trial.csv").write_text(TRIAL)

    def run_it(self, *arguments, **options):
        options.setdefault("stdout", subprocess.PIPE)
        return subprocess.run(
            [self.program, *arguments],
            stderr=subprocess.PIPE,
            cwd=self.folder,
            text=True,
            timeout=PATIENCE,
            check=False,
            **options,
        )

    def start(self, *arguments, **options):
        process = subprocess.Popen(
            [self.program, *arguments],
            stdout=options.pop("stdout", subprocess.DEVNULL),
            stderr=subprocess.DEVNULL,
            cwd=self.folder,
            **options,
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def read_fifo(self, name, process, most=None):
        """What the process writes into a FIFO, until it ends or there are `most` bytes."""
        text = b""
        descriptor = os.open(self.folder / name, os.O_RDONLY | os.O_NONBLOCK)
        try:
            end = time.monotonic() + PATIENCE
            while time.monotonic() < end and (most is None or len(text) < most):
                ended = process.poll() is not None
                try:
                    part = os.read(descriptor, most or 1 << 16)
                except BlockingIOError:
                    part = b""
                text += part
                if ended and not part:
                    break
                if not part:
                    time.sleep(0.01)
        finally:
            os.close(descriptor)
        return text.decode()

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def text(self, name):
        return (self.folder / name).read_text()

    def refused(self, result, code, message):
        self.assertEqual((result.stdout, result.stderr, result.returncode), ("", message, code))

    # What stands at the path.


def run():
    """The tests of the module that is run, with the program that the command line names."""
    Folder.program = os.path.abspath(sys.argv.pop(1))
    unittest.main()
