"""What docstrings have besides the declarations: of each analysis, and of what predicts from its
results, an example, which needs numpy alone and runs as a doctest, and the sources of its methods."""

LEUKEMIA = """\
>>> import survmeth
>>> data = {  # weeks in remission (Freireich et al., Blood 21, 1963)
...     "weeks": [6, 6, 6, 7, 10, 13, 16, 22, 23, 6, 9, 10, 11, 17, 19, 20, 25, 32, 32, 34, 35,
...               1, 1, 2, 2, 3, 4, 4, 5, 5, 8, 8, 8, 8, 11, 11, 12, 12, 15, 17, 22, 23],
...     "relapse": [1] * 9 + [0] * 12 + [1] * 21,
...     "arm": ["6-MP"] * 21 + ["placebo"] * 21}
"""

COMPETING = """\
>>> import survmeth
>>> data = {
...     "years": [1, 2, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3, 3, 4, 5, 7, 8, 9, 10],
...     "end": ["relapse", "death", "relapse", "censored", "relapse", "death", "relapse",
...             "censored", "death", "censored", "death", "relapse", "death", "censored",
...             "censored", "relapse", "death", "censored", "relapse", "censored"],
...     "arm": ["a"] * 10 + ["b"] * 10,
...     "age": [61, 55, 48, 70, 66, 52, 59, 45, 63, 50, 58, 67, 49, 71, 44, 62, 57, 53, 60, 47]}
"""

EXAMPLES = {
    "life": LEUKEMIA + """\
>>> fit = survmeth.life(data, time="weeks", event="relapse", group="arm")
>>> fit.arrays["summary"]["median"].tolist()
[23.0, 8.0]
>>> fit.arrays["tests"]["chiSquare"].round(3).tolist()
[16.793, 13.458, 15.124]
""",
    "cox": LEUKEMIA + """\
>>> fit = survmeth.cox("Surv(weeks, relapse) ~ arm", data)
>>> fit.arrays["coefficients"]["name"].tolist()
['arm=placebo']
>>> fit.arrays["coefficients"]["hazardRatio"].round(3).tolist()
[4.817]
""",
    "cox.predict": LEUKEMIA + """\
>>> fit = survmeth.cox("Surv(weeks, relapse) ~ arm", data)
>>> new = fit.predict({"arm": ["6-MP", "placebo"]}, at=[10, 20])
>>> new.arrays["predictions"]["risk"].round(3).tolist()
[0.456, 2.195]
>>> new.arrays["survival"]["survival"].round(3).tolist()
[0.803, 0.633, 0.347, 0.11]
""",
    "clogit": """\
>>> import survmeth
>>> pairs = {  # the case is exposed alone in four pairs, the control in one
...     "case": [1, 0] * 7,
...     "exposed": [1, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 0, 0],
...     "pair": [1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7]}
>>> fit = survmeth.clogit("case ~ exposed + strata(pair)", pairs)
>>> fit.arrays["coefficients"]["oddsRatio"].round(3).tolist()
[4.0]
""",
    "incidence": COMPETING + """\
>>> fit = survmeth.incidence(data, time="years", status="end", group="arm", event="relapse", at=[5])
>>> fit.arrays["incidenceAt"]["cumulativeIncidence"].round(4).tolist()
[0.3167, 0.24]
""",
    "gray": COMPETING + """\
>>> fit = survmeth.gray(data, time="years", status="end", group="arm")
>>> fit.arrays["tests"]["event"].tolist(), fit.arrays["tests"]["chiSquare"].round(4).tolist()
(['death', 'relapse'], [0.0109, 0.2146])
""",
    "finegray": COMPETING + """\
>>> fit = survmeth.finegray("Surv(years, end) ~ age", data, event="relapse")
>>> fit.arrays["coefficients"]["hazardRatio"].round(4).tolist()
[1.1228]
""",
    "finegray.predict": COMPETING + """\
>>> fit = survmeth.finegray("Surv(years, end) ~ age", data, event="relapse")
>>> new = fit.predict({"age": [50, 65]}, at=[3, 6])
>>> at = new.arrays["incidenceAt"]
>>> at["line"].tolist(), at["time"].tolist()
([1.0, 1.0, 2.0, 2.0], [3.0, 6.0, 3.0, 6.0])
>>> at["cumulativeIncidence"].round(4).tolist()
[0.0455, 0.1488, 0.2324, 0.5998]
""",
    "states": """\
>>> import survmeth
>>> stays = {
...     "id": [1, 1, 2, 2, 3, 4, 4, 5, 6],
...     "entry": [0, 2, 0, 1, 0, 0, 3, 0, 0],
...     "exit": [2, 6, 1, 4, 5, 3, 7, 8, 4],
...     "from": ["well", "ill", "well", "ill", "well", "well", "ill", "well", "well"],
...     "to": ["ill", "dead", "ill", "dead", "dead", "ill", "censored", "censored", "dead"]}
>>> fit = survmeth.states(stays, id="id", entry="entry", exit="exit", from_="from", to="to", at=[5])
>>> at = fit.arrays["probabilitiesAt"]
>>> at["state"].tolist(), at["probability"].round(4).tolist()
(['dead', 'ill', 'well'], [0.5, 0.3333, 0.1667])
""",
    "roc": """\
>>> import survmeth
>>> data = {"sick": [0, 0, 0, 0, 1, 1, 1, 1], "marker": [1, 2, 3, 5, 4, 6, 7, 8]}
>>> fit = survmeth.roc(data, class_="sick", marker="marker")
>>> fit.arrays["areas"]["area"].tolist()  # of 16 pairs of sick and well, 15 in order
[0.9375]
""",
    "agree": """\
>>> import survmeth
>>> flow = {"old": [494, 395, 516, 434, 476], "new": [512, 430, 520, 428, 500]}  # litres a minute
>>> fit = survmeth.agree(flow, first="old", second="new")
>>> fit.arrays["agreement"]["statistic"].tolist()[0], float(fit.arrays["agreement"]["estimate"][0])
('bias', 15.0)
""",
    "deming": """\
>>> import survmeth
>>> flow = {"old": [494, 395, 516, 434, 476], "new": [512, 430, 520, 428, 500]}  # litres a minute
>>> fit = survmeth.deming(flow, first="old", second="new")
>>> fit.arrays["coefficients"]["name"].tolist()
['intercept', 'slope']
>>> fit.arrays["coefficients"]["estimate"].round(4).tolist()
[47.2329, 0.9304]
""",
}

AALEN_JOHANSEN = "Aalen & Johansen, Scandinavian Journal of Statistics 5 (1978) 141-150"
FINE_GRAY = "Fine & Gray, JASA 94 (1999) 496-509"
GRAY = "Gray, Annals of Statistics 16 (1988) 1141-1154"
HARRELL = "Harrell et al., Stat Med 15 (1996) 361-387"

# As reports name them; of what is asked for rarely, the report alone.
SOURCES = {
    "life": ["Kaplan & Meier, JASA 53 (1958) 457-481",
             "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41",
             "Tarone & Ware, Biometrika 64 (1977) 156-160",
             "Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 4.5"],
    "cox": ["Cox, J R Stat Soc B 34 (1972) 187-220", "Efron, JASA 72 (1977) 557-565", HARRELL],
    "cox.predict": ["Tsiatis, Ann Statist 9 (1981) 93-108"],
    "clogit": ["Breslow & Day, Statistical Methods in Cancer Research I (1980), ch. 7",
               "Gail, Lubin & Rubinstein, Biometrika 68 (1981) 703-707", HARRELL],
    "incidence": [AALEN_JOHANSEN, "Aalen, Annals of Statistics 6 (1978) 534-545",
                  "Choudhury, Statistics in Medicine 21 (2002) 1129-1144", GRAY],
    "gray": [GRAY],
    "finegray": [FINE_GRAY, "Geskus, Biometrics 67 (2011) 39-49"],
    "finegray.predict": [FINE_GRAY],
    "states": [AALEN_JOHANSEN, "Andersen, Borgan, Gill & Keiding, Statistical Models Based on "
               "Counting Processes (1993) IV.4", "Aalen, Annals of Statistics 6 (1978) 701-726"],
    "roc": ["DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845",
            "Youden, Cancer 3 (1950) 32-35"],
    "agree": ["Bland & Altman, Lancet 1 (1986) 307-310",
              "Bland & Altman, Stat Methods Med Res 8 (1999) 135-160"],
    "deming": ["Deming, Statistical Adjustment of Data (1943)",
               "Linnet, Clin Chem 39 (1993) 424-432"],
}
