"""Installs the build into a folder that is then moved, for the tests that use it as a caller would.

The build to install and the compilers come in the environment: CMAKE, BUILD, CONFIG, GENERATOR,
LIBDIR, CC, CXX, CFLAGS, CXXFLAGS.
"""

import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parent.parent
CMAKE, BUILD = os.environ["CMAKE"], os.environ["BUILD"]
CFLAGS, CXXFLAGS = shlex.split(os.environ["CFLAGS"]), shlex.split(os.environ["CXXFLAGS"])
STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
C11 = [os.environ["CC"], *CFLAGS, "-std=c11", *STRICT]
CXX17 = [os.environ["CXX"], *CXXFLAGS, "-std=c++17", *STRICT]
CXX20 = [os.environ["CXX"], *CXXFLAGS, "-std=c++20", *STRICT]
ADDIN = ("Klikro", "Dist", "solver", "survival")  # folders of headers; the others are libsurvmeth's


def run(command, **options):
    """Runs a command and returns its output; a failure shows what the command said."""
    result = subprocess.run(
        [str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        text=True, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}\n{result.stdout}")
    return result.stdout


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        first = cls.folder / "first"
        cls.prefix = cls.folder / "moved here"  # a blank in the path must not matter
        run([CMAKE, "--install", BUILD, "--config", os.environ["CONFIG"], "--prefix", first])
        shutil.move(first, cls.prefix)
        cls.libraries = cls.prefix / os.environ["LIBDIR"]
        cls.include = cls.prefix / "include" / "survmeth"

    def pkg_config(self, *words):
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.libraries / "pkgconfig")}
        return shlex.split(run(["pkg-config", *words, "survmeth"], env=environment))

    def project(self, source, *options):
        """Configures and builds a project against the installed tree; the folder of its programs."""
        build = self.folder / f"{source.name} build"
        run([CMAKE, "-S", source, "-B", build, "-G", os.environ["GENERATOR"],
             f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_BUILD_TYPE={os.environ['CONFIG']}",
             f"-DCMAKE_C_FLAGS={os.environ['CFLAGS']}",
             f"-DCMAKE_CXX_FLAGS={os.environ['CXXFLAGS']}", *options])
        run([CMAKE, "--build", build])
        return build

    def headers(self, addin):
        found = sorted(path for path in self.include.rglob("*") if path.is_file() and
                       (path.relative_to(self.include).parts[0] in ADDIN) == addin)
        self.assertTrue(found)
        return found

    def compile(self, compiler, name, headers):
        source = self.folder / name
        source.write_text("".join(f'#include "{header.relative_to(self.include)}"\n'
                                  for header in headers))
        run([*compiler, *self.pkg_config("--cflags"), "-fsyntax-only", source])
