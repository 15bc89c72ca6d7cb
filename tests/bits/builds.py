"""Builds the libraries in several ways, runs them in several more, and compares every result of all
of them, bit for bit.

    builds.py [--jobs N] [--only TEXT]          builds and runs all, or those whose names hold TEXT
    builds.py --program PROGRAM                one program that is built, on 1, 2 and 7 threads

Each build goes into build/bits/<name> and makes only the program of the comparison of word sizes.
What cannot be built or run here (a compiler or an emulator that is not installed, instructions that
the processor has not) is named and left out. Prints a digest of each family of results. Ends with 1
when a result differs or fewer than two runs were made.
"""

import argparse
import dataclasses
import hashlib
import os
import pathlib
import platform
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(HERE.parent / "wordsize"))

import compare  # noqa: E402: found by the line above

AVX512 = ("avx512f", "avx512bw", "avx512cd", "avx512dq", "avx512vl")
ARM = "/usr/aarch64-linux-gnu"
C_COMPILERS = {"g++": "gcc", "clang++": "clang", "em++": "emcc"}
EMSCRIPTEN = "/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake"


@dataclasses.dataclass(frozen=True)
class Build:
    name: str
    compiler: str
    optimisation: str
    flags: tuple = ()
    clones: bool = False    # hot loops for several instruction sets
    features: tuple = ()    # the processor's that it wants
    cmake: tuple = ()       # further settings
    program: str = "wordsize_results"


BUILDS = {build.name: build for build in (
    Build("gcc-O3-clones", "g++", "-O3", clones=True),
    Build("gcc-O1", "g++", "-O1"),
    Build("gcc-O3-avx2-fma", "g++", "-O3", ("-march=x86-64-v3",), features=("avx2", "fma")),
    Build("gcc-O3-avx512", "g++", "-O3", ("-march=x86-64-v4",), features=AVX512),
    Build("clang-O1", "clang++", "-O1"),
    Build("clang-O3-avx2-fma", "clang++", "-O3", ("-march=x86-64-v3",), features=("avx2", "fma")),
    Build("gcc-O2-32", "g++", "-O2", ("-m32",)),
    Build("clang-O2-32", "clang++", "-O2", ("-m32",)),
    # By clang: gcc's cross compiler and gcc-multilib exclude one another on Debian.
    Build("aarch64-clang-O1", "clang++", "-O1", ("--target=aarch64-linux-gnu",),
          cmake=("-DCMAKE_SYSTEM_NAME=Linux", "-DCMAKE_SYSTEM_PROCESSOR=aarch64")),
    # Files are read through node; the stack is as large as elsewhere.
    Build("wasm-O2", "em++", "-O2",
          cmake=(f"-DCMAKE_TOOLCHAIN_FILE={EMSCRIPTEN}",
                 "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH",
                 "-DCMAKE_EXE_LINKER_FLAGS=-fwasm-exceptions -sNODERAWFS=1 "
                 "-sALLOW_MEMORY_GROWTH=1 -sTOTAL_STACK=8MB -sEXIT_RUNTIME=1"),
          program="wordsize_results.js"),
)}


@dataclasses.dataclass(frozen=True)
class Run:
    name: str
    build: str
    command: tuple = ()  # goes before the program
    environment: tuple = ()


THREADS = tuple(Run(f"{count} thread{'s' if count > 1 else ''}", "gcc-O3-clones",
                    environment=(("SURVMETH_THREADS", str(count)),)) for count in (1, 2, 7))
# Processors before and after fused multiply-add; the hot loops take what each has.
PROCESSORS = tuple(Run(name, "gcc-O3-clones", ("qemu-x86_64", "-cpu", name))
                   for name in ("Nehalem", "Haswell"))
COMMANDS = {"aarch64-clang-O1": ("qemu-aarch64", "-L", ARM), "wasm-O2": ("node", "--no-experimental-fetch")}
RUNS = (*THREADS, *PROCESSORS,
        *(Run("", name, COMMANDS.get(name, ())) for name in BUILDS if name != "gcc-O3-clones"))


def features():
    """The processor's features, as the kernel names them."""
    try:
        text = pathlib.Path("/proc/cpuinfo").read_text(encoding="ascii", errors="replace")
    except OSError:
        return set()
    return {word for line in text.splitlines() if line.startswith("flags")
            for word in line.split(":", 1)[1].split()}


def compiles(compiler, flags):
    """Whether a program can be compiled and linked with these flags."""
    program = "#include <vector>\nint main() { return std::vector<int>(1).at(0); }\n"
    words = [compiler, *flags, "-x", "c++", "-", "-o", "/dev/null"]
    return subprocess.run(words, input=program, capture_output=True, text=True).returncode == 0


def lacking(build, found):
    """What keeps a build from being made and run here, or None."""
    if platform.machine() not in ("x86_64", "AMD64") and (build.flags or build.features):
        return "another processor"
    if not shutil.which(build.compiler):
        return f"no {build.compiler}"
    if not compiles(build.compiler, build.flags):
        return f"{build.compiler} does not compile with {' '.join(build.flags)}"
    missing = [feature for feature in build.features if feature not in found]
    return f"the processor has no {missing[0]}" if missing else None


def made(build, jobs):
    """The program of a build."""
    folder = ROOT / "build" / "bits" / build.name
    text = " ".join(build.flags)
    steps = [["cmake", "-G", "Ninja", "-S", ROOT, "-B", folder, "-DCMAKE_BUILD_TYPE=Release",
              f"-DCMAKE_CXX_COMPILER={build.compiler}",
              f"-DCMAKE_C_COMPILER={C_COMPILERS[build.compiler]}",
              f"-DCMAKE_CXX_FLAGS={text}", f"-DCMAKE_C_FLAGS={text}",
              f"-DCMAKE_CXX_FLAGS_RELEASE={build.optimisation}",
              f"-DCMAKE_C_FLAGS_RELEASE={build.optimisation}",
              f"-DSURVMETH_MULTIVERSION={'ON' if build.clones else 'OFF'}",
              f"-DSURVMETH_PRECOMPILE={'OFF' if build.compiler == 'em++' else 'ON'}",
              "-DSURVMETH_PROGRAMS=OFF", *build.cmake],
             ["cmake", "--build", folder, "-j", str(jobs), "--target", "wordsize_results"]]
    # Emscripten's own scripts look for what they need where Debian does not.
    environment = {"NODE_PATH": "/usr/share/nodejs", **os.environ}
    for step in steps:
        run = subprocess.run(step, capture_output=True, text=True, stdin=subprocess.DEVNULL,
                             env=environment)
        if run.returncode != 0:
            sys.exit(f"{build.name}: {(run.stdout + run.stderr)[-3000:]}")
    return folder / "bin" / build.program


def family(head):
    return head.split("|", 1)[0]


def digests(table):
    """A hash of the results of each family, in which any NaN is like any other."""
    texts = {}
    for head in sorted(table):
        real = compare.is_real(head)
        elements = ["nan" if real and compare.is_nan(e) else e for e in table[head]]
        text = texts.setdefault(family(head), hashlib.sha256())
        text.update(f"{head}|{' '.join(elements)}\n".encode("ascii"))
    return {name: text.hexdigest()[:12] for name, text in texts.items()}


def counts(table):
    found = {}
    for head in sorted(table):
        found[family(head)] = found.get(family(head), 0) + len(table[head])
    return found


class Comparison:
    """Holds the first table and compares the others with it."""

    def __init__(self):
        self.first, self.ran, self.failures = None, 0, 0

    def add(self, name, table):
        if self.first is None:
            self.first = table
            print(f"{'':30}", *(f"{each:>14}" for each in digests(table)))
            print(f"{'results':30}", *(f"{count:14}" for count in counts(table).values()))
        different = compare.compare(self.first, table)
        self.failures += len(different)
        self.ran += 1
        print(f"{name:30}", *(f"{each:>14}" for each in digests(table).values()),
              f"  {len(different)} different" if different else "", flush=True)
        for line in different[:10]:
            print(f"    {line}")

    def leave_out(self, name, why):
        print(f"{name:30} left out: {why}", flush=True)


def runs_of(comparison, program, runs, name):
    for run in runs:
        full = " ".join(filter(None, (name, run.name)))
        if run.command and not shutil.which(run.command[0]):
            comparison.leave_out(full, f"no {run.command[0]}")
            continue
        comparison.add(full, compare.results(
            *run.command, program, environment={**os.environ, **dict(run.environment)}))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", default="", help="builds whose names hold this text")
    parser.add_argument("--program", type=pathlib.Path)
    arguments = parser.parse_args()
    found, comparison = features(), Comparison()
    if arguments.program:
        runs_of(comparison, arguments.program, THREADS, "")
    else:
        for name, build in BUILDS.items():
            if arguments.only not in name:
                continue
            why = lacking(build, found)
            if why:
                comparison.leave_out(name, why)
                continue
            runs_of(comparison, made(build, arguments.jobs),
                    [run for run in RUNS if run.build == name], name)
    print(f"{comparison.ran} runs, {comparison.failures} results differ")
    return 1 if comparison.failures or comparison.ran < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
