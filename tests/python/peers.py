"""The quantities of tests/reference/python/peers.csv as this package has them."""

import csv
import math

import numpy as np
import pandas

import survmeth
from cases import ROOT
from survmeth.sklearn import FineGrayRegression

LUNG = pandas.read_csv(ROOT / "data" / "lung.csv")[["time", "status", "age", "sex", "ph.ecog"]].dropna()
LUNG["male"] = (LUNG.pop("sex") == "male").astype(float)
LEUKEMIA = pandas.read_csv(ROOT / "data" / "leukemia.csv")
VETERAN = pandas.read_csv(ROOT / "data" / "veteran.csv")
PBC = pandas.read_csv(ROOT / "data" / "pbc.csv")
FORMULA = "Surv(time, status) ~ age + ph.ecog + male"


def numbered(quantity, values):
    return {f"{quantity} {i}": float(value) for i, value in enumerate(values)}


def life(data, **named):
    return survmeth.life(data, time="weeks", event="relapse", **named)


def of_curves():
    arm = LEUKEMIA[LEUKEMIA["treatment"] == "6-MP"]
    other = LEUKEMIA[LEUKEMIA["treatment"] == "placebo"]
    fit = life(arm, at=[6, 10, 22, 23], tau=20)
    summary, at, mean = fit.arrays["summary"], fit.arrays["survivalAt"], fit.arrays["restrictedMeans"]
    made = {"median": summary["median"][0], "restricted mean": mean["mean"][0],
            "restricted mean variance": mean["standardError"][0]**2}
    # Which limit does not exist is infinite there.
    made |= numbered("median limits", np.nan_to_num([summary["lower"][0], summary["upper"][0]],
                                                    nan=math.inf))
    for there, here in (("survival", "survival"), ("survival lower", "lower"),
                        ("survival upper", "upper")):
        made |= numbered(there, at[here])
    for there, estimate in (("cumulative hazard", "fleming-harrington"),
                            ("cumulative hazard plain", "nelson-aalen")):
        survival = life(other, at=[1, 5, 12, 17], estimate=estimate).arrays["survivalAt"]["survival"]
        made |= numbered(there, -np.log(survival))
    flat = survmeth.life({"t": [1, 2, 3, 4], "e": [1, 1, 1, 1]}, time="t", event="e")
    made["flat median"] = flat.arrays["summary"]["median"][0]
    return made


def of_tests():
    tests = life(LEUKEMIA, group="treatment", tests="all").arrays["tests"]
    made = {}
    for name, value, p in zip(tests["test"], tests["chiSquare"], tests["pValue"]):
        name = name.replace("Log-rank", "log-rank")
        made |= {name: value, f"{name} p": p}
    several = survmeth.life(VETERAN, time="time", event="status", group="celltype",
                            pairs="unadjusted")
    made["log-rank of four"] = several.arrays["tests"]["chiSquare"][0]
    pairs = several.arrays["pairs"]
    for first, second, value in zip(pairs["first"], pairs["second"], pairs["chiSquare"]):
        made[f"log-rank of {first} and {second}"] = value
    return made


def of_cox():
    fit = survmeth.cox(FORMULA, LUNG)
    coefficients, facts = fit.arrays["coefficients"], fit.facts
    new = fit.predict(LUNG.iloc[:3], at=[180], quantiles=[0.5])
    made = {"cox log-likelihood": facts["logLikelihood"], "cox AIC": facts["aic"],
            "cox concordance": facts["concordance"], "cox score": facts["concordance"],
            "cox likelihood ratio": fit.arrays["tests"]["chiSquare"][0]}
    made |= numbered("cox coef", coefficients["coef"])
    made |= numbered("cox se", coefficients["standardError"])
    made |= numbered("cox lower", np.log(coefficients["lower"]))
    made |= numbered("cox p", coefficients["pValue"])
    made |= numbered("cox linear predictor", new.arrays["predictions"]["linearPredictor"])
    made |= numbered("cox survival at 180", new.arrays["survival"]["survival"])
    made |= numbered("cox median", new.arrays["quantiles"]["time"])
    for transform in ("km", "rank", "identity"):
        zph = survmeth.cox(FORMULA, LUNG, zph=transform).arrays["proportionality"]["chiSquare"]
        made |= numbered(f"cox zph {transform}", zph[:3])
    robust = survmeth.cox(FORMULA, LUNG, robust=True).arrays["coefficients"]
    made |= numbered("cox robust se", robust["robustStandardError"])
    untied = LUNG.assign(time=LUNG["time"] + np.arange(len(LUNG)) / 1000)
    robust = survmeth.cox(FORMULA, untied, robust=True).arrays["coefficients"]
    made |= numbered("cox robust se without ties", robust["robustStandardError"])
    strata = survmeth.cox("Surv(time, status) ~ karno + age + strata(celltype)", VETERAN)
    made |= numbered("cox strata coef", strata.arrays["coefficients"]["coef"])
    for ties in ("breslow", "efron"):
        fit = survmeth.cox(FORMULA, LUNG, ties=ties)
        made |= numbered(f"cox coef {ties}", fit.arrays["coefficients"]["coef"])
        new = fit.predict(LUNG.iloc[:3], at=[180])
        made |= numbered(f"cox linear predictor {ties}",
                         new.arrays["predictions"]["linearPredictor"])
        made |= numbered(f"cox survival at 180 {ties}", new.arrays["survival"]["survival"])
    made["cox default first coef"] = coefficients["coef"][0]
    return made


def of_penalties():
    # Half its penalizer for each row, on columns in standard deviations.
    by_row = survmeth.cox(FORMULA, LUNG, ridge=0.1 * len(LUNG))
    made = numbered("cox penalizer coef", by_row.arrays["coefficients"]["coef"])
    raw = survmeth.cox(FORMULA, LUNG, ridge=5, ridge_raw=True)
    return made | numbered("cox alpha coef", raw.arrays["coefficients"]["coef"])


def of_the_rest():
    alone = survmeth.cox("Surv(time, status) ~ ph.ecog", LUNG)
    made = {"concordance": alone.facts["concordance"]}
    small = {"t": [1, 2, 3, 4, 5, 6], "e": [1, 2, 0, 1, 2, 0]}
    at = survmeth.incidence(small, time="t", status="e", event="1", at=[1, 2, 4, 6])
    made |= numbered("incidence", at.arrays["incidenceAt"]["cumulativeIncidence"])
    made |= numbered("incidence variance", at.arrays["incidenceAt"]["standardError"]**2)
    at = survmeth.incidence(PBC, time="time", status="status", at=[365, 1826, 3650])
    at = at.arrays["incidenceAt"]
    for there, event in (("incidence of death", "2"), ("incidence of transplant", "1")):
        made |= numbered(there, at["cumulativeIncidence"][at["event"] == event])
    made |= numbered("variance of the incidence of death",
                     at["standardError"][at["event"] == "2"]**2)
    for there, errors in (("", "estimated-weights"), (" by finegray", "sandwich")):
        fit = survmeth.finegray("Surv(time, status) ~ age + log(bili)", PBC, event="2",
                                errors=errors).arrays["coefficients"]
        made |= numbered(f"subdistribution coef{there}", fit["coef"])
        made |= numbered(f"subdistribution se{there}", fit["standardError"])
    columns = np.column_stack([PBC["age"], np.log(PBC["bili"])])
    estimator = FineGrayRegression(event=2).fit(columns, PBC[["time", "status"]])
    for i, day in enumerate((365, 3650)):
        made |= numbered(f"incidence at {day}",
                         estimator.predict_incidence(columns[:3], (365, 3650))[:, i])
    return made


def as_there():
    """What differs by default, and an argument makes it theirs."""
    arm = LEUKEMIA[LEUKEMIA["treatment"] == "6-MP"]
    flat = survmeth.life({"t": [1, 2, 3, 4], "e": [1, 1, 1, 1]}, time="t", event="e", flat="first")
    made = {("lifelines", "flat median"): flat.arrays["summary"]["median"][0]}
    small = {"t": [1, 2, 3, 4, 5, 6], "e": [1, 2, 0, 1, 2, 0]}
    delta = survmeth.incidence(small, time="t", status="e", event="1", at=[1, 2, 4, 6],
                               variance="delta").arrays["incidenceAt"]["standardError"]**2
    made |= under("lifelines", "incidence variance", delta)
    log = life(arm, at=[6, 10, 22, 23], conf="log").arrays["survivalAt"]
    made |= under("R", "survival lower", log["lower"]) | under("R", "survival upper", log["upper"])
    for ties in ("breslow", "efron"):
        fit = survmeth.cox(FORMULA, LUNG, ties=ties)
        zero = fit.predict(LUNG.iloc[:3], reference="zero").arrays["predictions"]
        made |= under("scikit-survival", f"cox linear predictor {ties}", zero["linearPredictor"])
        if ties == "breslow":
            made[("scikit-survival", "cox default first coef")] = \
                fit.arrays["coefficients"]["coef"][0]
    return {key: float(value) for key, value in made.items()}


def averaged_zph():
    """Each covariate's test from scaled Schoenfeld residuals with the average covariance."""
    fit = survmeth.cox(FORMULA, LUNG, residuals=True, residual_kinds=["schoenfeld"],
                       covariance=True).arrays
    columns = ["age", "ph.ecog", "male"]
    events = LUNG["status"].to_numpy() == 1
    residuals = np.column_stack([fit["residuals"][f"schoenfeld {name}"] for name in columns])[events]
    covariance = np.column_stack([fit["covariance"][f"covariance {name}"] for name in columns])
    times = LUNG["time"].to_numpy(float)[events]
    centred = times - times.mean()
    moved = centred @ residuals @ covariance * len(times)
    return moved**2 / (len(times) * np.diag(covariance) * (centred @ centred))


def under(peer, quantity, values):
    return {(peer, name): value for name, value in numbered(quantity, values).items()}


def ours():
    """By quantity, as Python's floats."""
    made = of_curves() | of_tests() | of_cox() | of_penalties() | of_the_rest()
    return {quantity: float(value) for quantity, value in made.items()}


def theirs():
    """By package and quantity."""
    made = {}
    for name in ("peers.csv", "peers_r.csv"):
        with open(ROOT / "tests" / "reference" / "python" / name, encoding="utf-8") as file:
            made |= {(row["peer"], row["quantity"]): float(row["value"])
                     for row in csv.DictReader(file)}
    return made
