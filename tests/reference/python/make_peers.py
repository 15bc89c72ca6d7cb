#!/usr/bin/env python3
"""What lifelines and scikit-survival make of the data sets in data: peers.csv, one row for a number.

    make_peers.py > peers.csv     lifelines 0.30.3, scikit-survival 0.28.0, numpy 2.4.6

tests/python/test_peers.py holds the same quantities of this package against them; those that differ
by definition are explained in docs/coming-from.md.
"""

import csv
import pathlib
import sys
import warnings

import numpy as np
import pandas
from lifelines import (AalenJohansenFitter, CoxPHFitter, KaplanMeierFitter, NelsonAalenFitter)
from lifelines.statistics import (logrank_test, multivariate_logrank_test,
                                  pairwise_logrank_test, proportional_hazard_test)
from lifelines.utils import (concordance_index, median_survival_times,
                             restricted_mean_survival_time)
from sksurv.compare import compare_survival
from sksurv.linear_model import CoxPHSurvivalAnalysis
from sksurv.metrics import concordance_index_censored
from sksurv.nonparametric import (cumulative_incidence_competing_risks, kaplan_meier_estimator,
                                  nelson_aalen_estimator)
from sksurv.util import Surv

DATA = pathlib.Path(__file__).resolve().parents[3] / "data"
LUNG = pandas.read_csv(DATA / "lung.csv")[["time", "status", "age", "sex", "ph.ecog"]].dropna()
LUNG["male"] = (LUNG.pop("sex") == "male").astype(float)
LEUKEMIA = pandas.read_csv(DATA / "leukemia.csv")
VETERAN = pandas.read_csv(DATA / "veteran.csv")
PBC = pandas.read_csv(DATA / "pbc.csv")
FLAT = [1.0, 2.0, 3.0, 4.0]  # the curve runs at 1/2 from 2 to 3
OUT = csv.writer(sys.stdout, lineterminator="\n")


def row(peer, quantity, value):
    OUT.writerow([peer, quantity, repr(float(value))])


def rows(peer, quantity, values):
    for i, value in enumerate(values):
        row(peer, f"{quantity} {i}", value)


def lifelines_curves():
    arm = LEUKEMIA[LEUKEMIA.treatment == "6-MP"]
    other = LEUKEMIA[LEUKEMIA.treatment == "placebo"]
    curve = KaplanMeierFitter().fit(arm.weeks, arm.relapse)
    row("lifelines", "median", curve.median_survival_time_)
    rows("lifelines", "median limits", median_survival_times(curve.confidence_interval_).iloc[0])
    rows("lifelines", "survival", curve.survival_function_at_times([6, 10, 22, 23]))
    rows("lifelines", "survival lower", curve.confidence_interval_.iloc[:, 0][[6, 10, 22, 23]])
    rows("lifelines", "survival upper", curve.confidence_interval_.iloc[:, 1][[6, 10, 22, 23]])
    mean, variance = restricted_mean_survival_time(curve, t=20, return_variance=True)
    row("lifelines", "restricted mean", mean)
    row("lifelines", "restricted mean variance", variance)
    hazard = NelsonAalenFitter().fit(other.weeks, other.relapse)
    rows("lifelines", "cumulative hazard", hazard.cumulative_hazard_.iloc[:, 0][[1, 5, 12, 17]])
    plain = NelsonAalenFitter(nelson_aalen_smoothing=False).fit(other.weeks, other.relapse)
    rows("lifelines", "cumulative hazard plain",
         plain.cumulative_hazard_.iloc[:, 0][[1, 5, 12, 17]])
    row("lifelines", "flat median", KaplanMeierFitter().fit(FLAT).median_survival_time_)


def lifelines_tests():
    arm = LEUKEMIA[LEUKEMIA.treatment == "6-MP"]
    other = LEUKEMIA[LEUKEMIA.treatment == "placebo"]
    for name, weight in (("log-rank", None), ("Gehan-Breslow", "wilcoxon"),
                         ("Tarone-Ware", "tarone-ware"), ("Peto-Peto", "peto")):
        test = logrank_test(arm.weeks, other.weeks, arm.relapse, other.relapse,
                            weightings=weight)
        row("lifelines", name, test.test_statistic)
        row("lifelines", f"{name} p", test.p_value)
    several = multivariate_logrank_test(VETERAN.time, VETERAN.celltype, VETERAN.status)
    row("lifelines", "log-rank of four", several.test_statistic)
    pairs = pairwise_logrank_test(VETERAN.time, VETERAN.celltype, VETERAN.status)
    for (first, second), value in pairs.summary["test_statistic"].items():
        row("lifelines", f"log-rank of {first} and {second}", value)


def lifelines_cox():
    fit = CoxPHFitter().fit(LUNG, "time", "status", fit_options={"precision": 1e-12})
    rows("lifelines", "cox coef", fit.params_)
    rows("lifelines", "cox se", fit.standard_errors_)
    rows("lifelines", "cox lower", fit.confidence_intervals_.iloc[:, 0])
    rows("lifelines", "cox p", fit.summary["p"])
    row("lifelines", "cox log-likelihood", fit.log_likelihood_)
    row("lifelines", "cox likelihood ratio", fit.log_likelihood_ratio_test().test_statistic)
    row("lifelines", "cox concordance", fit.concordance_index_)
    row("lifelines", "cox AIC", fit.AIC_partial_)
    new = LUNG.iloc[:3]
    rows("lifelines", "cox linear predictor", fit.predict_log_partial_hazard(new))
    rows("lifelines", "cox survival at 180", fit.predict_survival_function(new, [180]).iloc[0])
    rows("lifelines", "cox median", np.ravel(fit.predict_median(new)))
    for transform in ("km", "rank", "identity"):
        test = proportional_hazard_test(fit, LUNG, time_transform=transform)
        rows("lifelines", f"cox zph {transform}", test.test_statistic)
    robust = CoxPHFitter().fit(LUNG, "time", "status", robust=True,
                               fit_options={"precision": 1e-12})
    rows("lifelines", "cox robust se", robust.standard_errors_)
    untied = LUNG.assign(time=LUNG["time"] + np.arange(len(LUNG)) / 1000)
    robust = CoxPHFitter().fit(untied, "time", "status", robust=True,
                               fit_options={"precision": 1e-12})
    rows("lifelines", "cox robust se without ties", robust.standard_errors_)
    strata = CoxPHFitter().fit(VETERAN[["time", "status", "karno", "age", "celltype"]], "time",
                               "status", strata=["celltype"], fit_options={"precision": 1e-12})
    rows("lifelines", "cox strata coef", strata.params_)
    ridge = CoxPHFitter(penalizer=0.1).fit(LUNG, "time", "status",
                                           fit_options={"precision": 1e-12})
    rows("lifelines", "cox penalizer coef", ridge.params_)


def lifelines_rest():
    row("lifelines", "concordance",
        concordance_index(LUNG["time"], -LUNG["ph.ecog"], LUNG["status"]))
    # Without the jitter of tied times that the fitter adds by itself: at one event each time.
    small = {"t": [1, 2, 3, 4, 5, 6], "e": [1, 2, 0, 1, 2, 0]}
    incidence = AalenJohansenFitter(calculate_variance=True).fit(small["t"], small["e"], 1)
    rows("lifelines", "incidence", incidence.cumulative_density_.iloc[:, 0][[1, 2, 4, 6]])
    rows("lifelines", "incidence variance", incidence.variance_[[1, 2, 4, 6]])


def sksurv_curves():
    arm = LEUKEMIA[LEUKEMIA.treatment == "6-MP"]
    other = LEUKEMIA[LEUKEMIA.treatment == "placebo"]
    time, survival, limits = kaplan_meier_estimator(arm.relapse == 1, arm.weeks,
                                                    conf_type="log-log")
    at = np.searchsorted(time, [6, 10, 22, 23], side="right") - 1
    rows("scikit-survival", "survival", survival[at])
    rows("scikit-survival", "survival lower", limits[0][at])
    rows("scikit-survival", "survival upper", limits[1][at])
    time, hazard = nelson_aalen_estimator(other.relapse == 1, other.weeks)
    rows("scikit-survival", "cumulative hazard plain",
         hazard[np.searchsorted(time, [1, 5, 12, 17], side="right") - 1])
    for name, data, group in (("log-rank", LEUKEMIA.rename(columns={"weeks": "time",
                                                                   "relapse": "status"}),
                               "treatment"), ("log-rank of four", VETERAN, "celltype")):
        response = Surv.from_arrays(data.status == 1, data.time)
        row("scikit-survival", name, compare_survival(response, data[group])[0])
    time, incidence = cumulative_incidence_competing_risks(PBC.status.to_numpy(),
                                                           PBC.time.to_numpy(float))
    at = np.searchsorted(time, [365, 1826, 3650], side="right") - 1
    rows("scikit-survival", "incidence of death", incidence[2][at])
    rows("scikit-survival", "incidence of transplant", incidence[1][at])


def sksurv_cox():
    covariates = LUNG[["age", "ph.ecog", "male"]]
    response = Surv.from_arrays(LUNG.status == 1, LUNG.time)
    for ties in ("breslow", "efron"):
        fit = CoxPHSurvivalAnalysis(ties=ties, tol=1e-12).fit(covariates, response)
        rows("scikit-survival", f"cox coef {ties}", fit.coef_)
        rows("scikit-survival", f"cox linear predictor {ties}", fit.predict(covariates.iloc[:3]))
        rows("scikit-survival", f"cox survival at 180 {ties}",
             [curve(180) for curve in fit.predict_survival_function(covariates.iloc[:3])])
    row("scikit-survival", "cox default first coef",
        CoxPHSurvivalAnalysis().fit(covariates, response).coef_[0])
    row("scikit-survival", "cox score", fit.score(covariates, response))
    row("scikit-survival", "concordance",
        concordance_index_censored(LUNG.status == 1, LUNG.time, LUNG["ph.ecog"])[0])
    ridge = CoxPHSurvivalAnalysis(alpha=5.0, ties="efron", tol=1e-12).fit(covariates, response)
    rows("scikit-survival", "cox alpha coef", ridge.coef_)


def main():
    warnings.simplefilter("ignore")
    OUT.writerow(["peer", "quantity", "value"])
    for part in (lifelines_curves, lifelines_tests, lifelines_cox, lifelines_rest, sksurv_curves,
                 sksurv_cox):
        part()


if __name__ == "__main__":
    main()
