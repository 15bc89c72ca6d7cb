"""survmeth as a part of another project, by add_subdirectory and by FetchContent.

    subproject_test.py [--build]

Configures both, in which the project checks that nothing of its own has changed. With --build it
also builds the programs and compares what they print; that compiles the libraries anew. CMAKE and
GENERATOR come in the environment.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parent.parent
BUILD = "--build" in sys.argv


def run(*words):
    result = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False)
    if result.returncode != 0:
        raise AssertionError(f"{words} ended with {result.returncode}\n{result.stdout[-6000:]}")
    return result.stdout


class Subproject(unittest.TestCase):
    def configured(self, way, folder, *options):
        cmake = os.environ.get("CMAKE", "cmake")
        run(cmake, "-S", HERE / "subproject", "-B", folder, "-G",
            os.environ.get("GENERATOR", "Ninja"), f"-DWAY={way}", f"-DSOURCE={ROOT}",
            "-DCMAKE_BUILD_TYPE=Release", *options)
        return cmake

    def test_by_fetch_content_the_parent_stays_as_it_was(self):
        with tempfile.TemporaryDirectory() as folder:
            self.configured("FetchContent", folder)

    def test_by_add_subdirectory_the_parent_stays_as_it_was_and_its_programs_run(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            # What the parent chooses holds: the run path of what it installs is its own.
            cmake = self.configured("add_subdirectory", folder)
            if not BUILD:
                return
            run(cmake, "--build", folder, "-j", os.cpu_count())
            expected = ROOT / "tests" / "examples"
            self.assertEqual(run(folder / "spans"), (expected / "spans.txt").read_text())
            self.assertEqual(run(folder / "hazards", ROOT / "data" / "lung.csv"),
                             (expected / "hazards.txt").read_text())
            self.assertIn("Survival by treatment",
                          run(folder / "report", ROOT / "data" / "leukemia.csv"))


if __name__ == "__main__":
    unittest.main(argv=[word for word in sys.argv if word != "--build"])
