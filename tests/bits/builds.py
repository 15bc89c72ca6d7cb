"""Builds the libraries in several ways and compares every result of all of them, bit for bit.

    builds.py [--jobs N] [--only TEXT]

Each build goes into build/bits/<name> and makes only the program of the comparison of word sizes.
What cannot be built or run here (a compiler that is not installed, instructions that the processor
has not) is named and left out. Ends with 1 when a result differs or fewer than two builds ran.
"""

import argparse
import hashlib
import pathlib
import platform
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(HERE.parent / "wordsize"))

import compare  # noqa: E402: found by the line above

X86 = ["-m32", "-msse2", "-mfpmath=sse"]
# Name, C++ compiler, optimisation, other flags, whether hot loops are compiled for several
# instruction sets, and the processor's features that the build wants.
BUILDS = [
    ("gcc-O3-clones", "g++", "-O3", [], True, []),
    ("gcc-O1", "g++", "-O1", [], False, []),
    ("gcc-O3-avx2-fma", "g++", "-O3", ["-march=x86-64-v3"], False, ["avx2", "fma"]),
    ("gcc-O3-avx512", "g++", "-O3", ["-march=x86-64-v4"], False,
     ["avx512f", "avx512bw", "avx512cd", "avx512dq", "avx512vl"]),
    ("clang-O1", "clang++", "-O1", [], False, []),
    ("clang-O3-avx2-fma", "clang++", "-O3", ["-march=x86-64-v3"], False, ["avx2", "fma"]),
    ("gcc-O2-32", "g++", "-O2", X86, False, []),
    ("clang-O2-32", "clang++", "-O2", X86, False, []),
]


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
    return subprocess.run([compiler, *flags, "-x", "c++", "-", "-o", "/dev/null"], input=program,
                          capture_output=True, text=True).returncode == 0


def lacking(compiler, flags, wanted, found):
    """What keeps a build from being made and run here, or None."""
    if platform.machine() not in ("x86_64", "AMD64") and (flags or wanted):
        return "another processor"
    if not shutil.which(compiler):
        return f"no {compiler}"
    if not compiles(compiler, flags):
        return f"{compiler} does not compile with {' '.join(flags)}"
    missing = [feature for feature in wanted if feature not in found]
    return f"the processor has no {missing[0]}" if missing else None


def made(name, compiler, optimisation, flags, clones, jobs):
    """The program of a build."""
    folder = ROOT / "build" / "bits" / name
    c_compiler = {"g++": "gcc", "clang++": "clang"}[compiler]
    text = " ".join(flags)
    steps = [["cmake", "-G", "Ninja", "-S", ROOT, "-B", folder, "-DCMAKE_BUILD_TYPE=Release",
              f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_C_COMPILER={c_compiler}",
              f"-DCMAKE_CXX_FLAGS={text}", f"-DCMAKE_C_FLAGS={text}",
              f"-DCMAKE_CXX_FLAGS_RELEASE={optimisation}", f"-DCMAKE_C_FLAGS_RELEASE={optimisation}",
              f"-DSURVMETH_MULTIVERSION={'ON' if clones else 'OFF'}", "-DSURVMETH_PROGRAMS=OFF"],
             ["cmake", "--build", folder, "-j", str(jobs), "--target", "wordsize_results"]]
    for step in steps:
        run = subprocess.run(step, capture_output=True, text=True, stdin=subprocess.DEVNULL)
        if run.returncode != 0:
            sys.exit(f"{name}: {(run.stdout + run.stderr)[-3000:]}")
    return folder / "bin" / "wordsize_results"


def digest(table):
    """A hash of all results in which any NaN is like any other."""
    text = hashlib.sha256()
    for head in sorted(table):
        real = compare.is_real(head)
        elements = ["nan" if real and compare.is_nan(e) else e for e in table[head]]
        text.update(f"{head}|{' '.join(elements)}\n".encode("ascii"))
    return text.hexdigest()[:16]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", default="", help="builds whose names hold this text")
    arguments = parser.parse_args()
    found, first, failures, ran = features(), None, 0, 0
    for name, compiler, optimisation, flags, clones, wanted in BUILDS:
        if arguments.only not in name:
            continue
        why = lacking(compiler, flags, wanted, found)
        if why:
            print(f"{name:18} left out: {why}")
            continue
        table = compare.results(made(name, compiler, optimisation, flags, clones, arguments.jobs))
        first = first or table
        different = compare.compare(first, table)
        failures += len(different)
        ran += 1
        print(f"{name:18} {digest(table)}  {sum(map(len, table.values()))} results, "
              f"{len(different)} different", flush=True)
        for line in different[:10]:
            print(f"    {line}")
    return 1 if failures or ran < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
