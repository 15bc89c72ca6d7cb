#!/usr/bin/env python3
"""One side of the comparison of Python packages: an analysis of columns in memory, timed.

    peers.py PACKAGE JOB FILE RUNS     FILE: the columns that bench/python made (npz)

Prints "seconds" of processor time for each run, at least RUNS, after one that is not counted, or of
that one alone where it takes long; "peak" bytes; and the "result"s that every side has to have alike.
Leaves with 3 for a job that the package has no part in, with 4 where the package is not installed.
"""

import importlib
import resource
import sys
import time

# Seconds. What takes longer runs once: to warm it up changes little of that. What takes little runs
# until it has taken so many in all.
LONG, ENOUGH = 2.0, 1.0


def survmeth_life(columns):
    import survmeth

    def run():
        fit = survmeth.life(columns, time="time", event="event", group="group", tests=["logrank"])
        return {"chiSquare": fit.arrays["tests"]["chiSquare"][0],
                "median": fit.arrays["summary"]["median"][0]}

    return run


def lifelines_life(columns):
    import numpy
    import pandas
    from lifelines import KaplanMeierFitter
    from lifelines.statistics import multivariate_logrank_test

    data = pandas.DataFrame(columns)

    def run():
        medians = []
        for group in numpy.unique(data["group"]):
            rows = data[data["group"] == group]
            fit = KaplanMeierFitter().fit(rows["time"], rows["event"])
            medians.append(fit.median_survival_time_)
        test = multivariate_logrank_test(data["time"], data["group"], data["event"])
        return {"chiSquare": test.test_statistic, "median": medians[0]}

    return run


def sksurv_life(columns):
    import numpy
    from sksurv.compare import compare_survival
    from sksurv.nonparametric import kaplan_meier_estimator
    from sksurv.util import Surv

    event = columns["event"] == 1
    response = Surv.from_arrays(event, columns["time"])

    def run():
        medians = []
        for group in numpy.unique(columns["group"]):
            rows = columns["group"] == group
            times, survival, _ = kaplan_meier_estimator(event[rows], columns["time"][rows],
                                                        conf_type="log-log")
            medians.append(times[numpy.argmax(survival <= 0.5)])
        return {"chiSquare": compare_survival(response, columns["group"])[0],
                "median": medians[0]}

    return run


def covariates_of(columns):
    return [name for name in columns if name not in ("time", "event")]


def survmeth_cox(columns):
    import survmeth

    def run():
        fit = survmeth.cox(columns, time="time", event="event", covariates=covariates_of(columns))
        return {"coef": fit.arrays["coefficients"]["coef"][0], "logLik": fit.facts["logLikelihood"]}

    return run


def lifelines_cox(columns):
    import pandas
    from lifelines import CoxPHFitter

    data = pandas.DataFrame(columns)

    def run():
        fit = CoxPHFitter().fit(data, "time", "event")
        return {"coef": fit.params_.iloc[0], "logLik": fit.log_likelihood_}

    return run


def sksurv_cox(columns):
    import numpy
    from sksurv.linear_model import CoxPHSurvivalAnalysis
    from sksurv.util import Surv

    covariates = numpy.column_stack([columns[name] for name in covariates_of(columns)])
    response = Surv.from_arrays(columns["event"] == 1, columns["time"])

    def run():
        fit = CoxPHSurvivalAnalysis(ties="efron", tol=1e-9).fit(covariates, response)
        return {"coef": fit.coef_[0]}

    return run


def survmeth_concordance(columns):
    import numpy
    from survmeth.sklearn import concordance_index

    y = numpy.column_stack([columns["time"], columns["event"]])
    return lambda: {"concordance": concordance_index(y, columns["score"])}


def lifelines_concordance(columns):
    from lifelines.utils import concordance_index

    return lambda: {"concordance": concordance_index(columns["time"], -columns["score"],
                                                     columns["event"])}


def sksurv_concordance(columns):
    from sksurv.metrics import concordance_index_censored

    return lambda: {"concordance": concordance_index_censored(columns["event"] == 1,
                                                              columns["time"],
                                                              columns["score"])[0]}


def timed(run):
    start = time.process_time()
    results = run()
    return time.process_time() - start, results


def main():
    package, job, path, runs = sys.argv[1:]
    try:
        importlib.import_module(package)
    except ImportError:
        return 4
    prepare = globals().get(f"{package}_{job}")
    if prepare is None:
        return 3
    import numpy

    with numpy.load(path) as file:
        columns = {name: file[name] for name in file.files}
    run = prepare(columns)
    first, results = timed(run)
    seconds = [first] if first >= LONG else []
    while first < LONG and (len(seconds) < int(runs) or sum(seconds) < ENOUGH):
        seconds.append(timed(run)[0])
    print("seconds", *seconds)
    print("peak", resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024)
    for name, value in results.items():
        print("result", name, repr(float(value)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
