"""Threads, interrupts, progress, and what is left behind."""

import gc
import os
import pickle
import resource
import signal
import subprocess
import sys
import threading
import time
import tracemalloc
import weakref

import numpy as np
import polars
import pytest

import survmeth
from standstill import standstill_during
from survmeth import _progress

RANDOM = np.random.default_rng(20)


def large(rows):
    return {"t": RANDOM.exponential(size=rows), "e": RANDOM.integers(0, 2, rows),
            "g": RANDOM.integers(0, 3, rows),
            "x": RANDOM.normal(size=rows), "y": RANDOM.normal(size=rows)}


def cox(data, **named):
    return survmeth.cox(data, time="t", event="e", covariates=["x", "y"], **named)


def life(data):
    return survmeth.life(data, time="t", event="e", group="g")


def test_sixteen_threads_get_what_one_gets():
    data = large(2000)
    expected = cox(data).to_json()
    made = [None] * 16

    def work(i):
        made[i] = cox(data).to_json()

    threads = [threading.Thread(target=work, args=(i,)) for i in range(16)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert made == [expected] * 16


def test_other_threads_run_while_an_analysis_does():
    data = large(20_000)
    longest, took = standstill_during(lambda: cox(data))
    # With the lock held throughout, the watcher would stand still for all of it.
    assert longest < took / 2


def test_what_progress_raises_ends_the_run():
    class Enough(Exception):
        pass

    calls = []

    def tell(done):
        calls.append(done)
        raise Enough

    with pytest.raises(Enough):
        cox(large(2000), progress=tell)
    assert calls == [0.0]


def test_a_function_is_told_and_false_tells_nobody():
    told = []
    cox(large(20_000), progress=told.append)
    assert told and all(0 <= done <= 1 for done in told) and told == sorted(told)
    with _progress.telling(False, "cox") as tell:
        assert tell is None


def test_a_bar_shows_and_goes(capfd):
    fit = cox(large(2000), progress=True)
    shown = capfd.readouterr().err
    assert "cox:   0%|" in shown
    assert fit.facts["n"] == 2000


def test_nothing_shows_outside_notebooks_and_without_tqdm(capfd, monkeypatch):
    with _progress.telling(None, "cox") as tell:
        assert tell is None
    monkeypatch.setitem(sys.modules, "tqdm.std", None)
    monkeypatch.setitem(sys.modules, "tqdm.auto", None)
    cox(large(2000), progress=True)
    assert capfd.readouterr().err == ""


def test_notebooks_show_a_bar_where_the_run_takes_long(capfd, monkeypatch):
    monkeypatch.setattr(_progress, "in_notebook", lambda: True)
    cox(large(200))
    assert capfd.readouterr().err == ""
    monkeypatch.setattr(_progress, "PATIENCE", 0)
    cox(large(2000))
    assert "cox:   0%|" in capfd.readouterr().err


def test_an_interrupt_ends_the_run():
    # What a shell starts in the background ignores interrupts until somebody asks for them.
    program = """
import signal
import numpy as np, survmeth
signal.signal(signal.SIGINT, signal.default_int_handler)
random = np.random.default_rng(1)
n = 20_000
data = {"t": random.exponential(size=n), "e": random.integers(0, 2, n)}
names = [f"x{i}" for i in range(5)]
data |= {name: random.normal(size=n) for name in names}
print("ready", flush=True)
try:
    while True:
        survmeth.cox(data, time="t", event="e", covariates=names)
except KeyboardInterrupt:
    print("interrupted")
"""
    run = subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE,
                           stderr=subprocess.PIPE, text=True)
    assert run.stdout.readline() == "ready\n"
    time.sleep(0.5)
    run.send_signal(signal.SIGINT)
    out, err = run.communicate(timeout=60)
    assert (out, err, run.returncode) == ("interrupted\n", "", 0)


def test_nothing_is_left_behind():
    data = large(5000)
    for _ in range(20):
        life(data).arrays
    gc.collect()
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    for _ in range(300):
        fit = life(data)
        fit.arrays, fit.figures, fit.to_json()
        with pytest.raises(survmeth.RefusedInput):
            survmeth.life(data, time="t", event="nobody")
    del fit
    gc.collect()
    # A result of 5000 rows holds some 600 kB; 300 of them would be 180 MB. In kB on Linux.
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before < 8000


def test_no_object_of_python_is_left_behind():
    data = large(300)
    new = {"x": data["x"][:3], "y": data["y"][:3]}
    told = []

    def once():
        fit = life(data)
        fit.tables, list(fit.arrays), fit.figures, fit.facts, fit.notes, fit.summary()
        pickle.loads(pickle.dumps(fit)).to_csv()
        regression = cox(data, progress=lambda done: told.append(done) or told.clear())
        regression.predict(new, at=[1]).tables["survival"]
        cox(polars.DataFrame(data), newdata=new).to_html()
        with pytest.raises(survmeth.RefusedInput):
            life(data | {"t": -data["t"]})
        with pytest.raises(TypeError):
            survmeth.life(data, tiem="t")
        return weakref.ref(fit), weakref.ref(regression)

    runs, left = 20, []
    tracemalloc.start()
    try:
        for _ in range(7):
            before = tracemalloc.get_traced_memory()[0]
            for _ in range(runs):
                results = once()
            gc.collect()
            left.append(tracemalloc.get_traced_memory()[0] - before)
    finally:
        tracemalloc.stop()
    assert [result() for result in results] == [None, None]
    # Caches fill and tables of interned texts grow now and then; a leak takes something every time,
    # the least object, an empty list, 56 bytes a run.
    assert min(left) < 40 * runs, left


def test_the_interpreter_ends_without_leaks_of_the_module():
    program = ("import survmeth\n"
               "fit = survmeth.life({'t': [1, 2], 'e': [1, 0]}, time='t', event='e')\n"
               "held = fit.arrays['summary']['n']\n")
    run = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True,
                         check=True)
    assert (run.stdout, run.stderr) == ("", "")


def test_a_fork_computes_the_same():
    data = large(2000)
    expected = cox(data).to_json()
    read, write = os.pipe()
    child = os.fork()
    if child == 0:
        os.write(write, b"y" if cox(data).to_json() == expected else b"n")
        os._exit(0)
    os.waitpid(child, 0)
    assert os.read(read, 1) == b"y"
