#!/usr/bin/env python3
"""The sides of lifelines and scikit-survival of the comparisons: the same jobs on the same columns as
bench_jobs.

    peers.py PACKAGE JOB FILE COLUMNS RUNS

Prints what `bench_jobs time` prints. Leaves with 3 for a job that the package has no part in, with 4
where the package is not installed.
"""

import array
import importlib
import pathlib
import resource
import sys
import time


def lifelines_fit(columns):
    import pandas
    from lifelines import CoxPHFitter

    data = pandas.DataFrame({f"c{j}": column for j, column in enumerate(columns)})

    def run():
        fit = CoxPHFitter().fit(data, "c0", "c1")
        return {"beta": float(fit.params_.iloc[0]), "logLik": float(fit.log_likelihood_)}

    return run


def sksurv_fit(columns):
    import numpy
    from sksurv.linear_model import CoxPHSurvivalAnalysis
    from sksurv.util import Surv

    covariates = numpy.column_stack(columns[2:])
    response = Surv.from_arrays(numpy.array(columns[1]) != 0, numpy.array(columns[0]))

    def run():
        fit = CoxPHSurvivalAnalysis(ties="efron", tol=1e-9).fit(covariates, response)
        return {"beta": float(fit.coef_[0])}

    return run


JOBS = {("lifelines", "hazards_fit"): lifelines_fit, ("sksurv", "hazards_fit"): sksurv_fit}


def main():
    package, job, path, count, runs = sys.argv[1:]
    try:
        importlib.import_module(package)
    except ImportError:
        return 4
    if (package, job) not in JOBS:
        return 3
    values = array.array("d", pathlib.Path(path).read_bytes())
    rows = len(values) // int(count)
    run = JOBS[package, job]([values[j * rows:(j + 1) * rows] for j in range(int(count))])
    results, seconds = run(), []
    for _ in range(int(runs)):
        start = time.process_time()
        results = run()
        seconds.append(time.process_time() - start)
    print("seconds", *seconds)
    print("peak", resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024)
    for name, value in results.items():
        print("result", name, repr(value))
    return 0


if __name__ == "__main__":
    sys.exit(main())
