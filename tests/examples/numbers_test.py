"""The numbers that the examples have to print are those of tests/reference, to the last digit
printed: a second witness beside the script that wrote the text."""

import csv
import math
import pathlib
import unittest

HERE = pathlib.Path(__file__).resolve().parent
REFERENCE = HERE.parent / "reference"
LINES = (HERE / "lung.txt").read_text().splitlines()
HALF_DIGIT = 0.5000001e-6


def reference(name):
    with open(REFERENCE / name, newline="", encoding="utf-8") as file:
        return list(csv.DictReader(file))


def block(start):
    """The lines below the one that starts so, up to the next empty one, as name and cells."""
    first = next(k for k, line in enumerate(LINES) if line.startswith(start)) + 1
    last = LINES.index("", first) if "" in LINES[first:] else len(LINES)
    return [(line[:18].strip(), line[18:].split()) for line in LINES[first:last]]


class Numbers(unittest.TestCase):
    def close(self, printed, wanted):
        self.assertLessEqual(abs(float(printed) - float(wanted)), HALF_DIGIT)

    def test_curves(self):
        for sex in ("female", "male"):
            wanted = [row for row in reference("km_lung.csv") if row["group"] == sex]
            printed = [(time, cells) for time, cells in block(f"{sex}: ") if time.isdigit()]
            self.assertEqual(len(printed), len(wanted))
            for (time, cells), row in zip(printed, wanted):
                self.assertEqual([time, *cells[:3]],
                                 [row[name] for name in ("time", "n.risk", "n.event", "n.censor")])
                self.close(cells[3], row["survival"])
                self.close(cells[4], float(row["survival"])
                           * math.sqrt(float(row["greenwood.sum"])))

    def test_log_rank(self):
        wanted = next(row for row in reference("logrank.csv") if row["data"] == "lung by sex")
        chi = dict(block("Comparison"))["log-rank"]
        self.close(chi[0], wanted["chisq"])
        self.close(chi[2], math.erfc(math.sqrt(float(wanted["chisq"]) / 2)))

    def test_coefficients(self):
        printed = dict(block("Cox regression"))
        wanted = reference("cox_lung_coefficients.csv")
        self.assertEqual([row["term"] for row in wanted], ["age", "male", "ph.ecog"])
        for row in wanted:
            cells = printed[row["term"]]
            for k, name in enumerate(["coef", "se", "wald.chisq", None, "hazard.ratio", "lower95",
                                      "upper95"]):
                if name:
                    self.close(cells[k], row[name])
            self.close(cells[3], math.erfc(math.sqrt(float(row["wald.chisq"]) / 2)))

    def test_fit(self):
        printed = dict(block("Cox regression"))
        wanted = {name: float(text) for name, text in reference("cox_lung_fit.csv")[0].items()}
        self.assertTrue(any(f"{wanted['n']:.0f} patients" in line for line in LINES))
        without, fitted = -2 * wanted["loglik.null"], -2 * wanted["loglik"]
        for name, values in {
                "events": [wanted["events"]] * 2,
                "-2 log L": [without, fitted],
                "AIC": [without, fitted + 2 * 3],
                "SBC": [without, fitted + 3 * math.log(wanted["events"])]}.items():
            for cell, value in zip(printed[name], values):
                self.close(cell, value)
        for name, column in [("likelihood ratio", "lr"), ("score", "score"), ("Wald", "wald")]:
            self.assertEqual(float(printed[name][0]), 3)
            self.close(printed[name][1], wanted[column])


if __name__ == "__main__":
    unittest.main()
