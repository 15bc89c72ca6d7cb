"""The types of the package, as a checker reads them."""

import ast
import inspect
import os
import pathlib
import subprocess
import sys

import survmeth
from survmeth import sklearn as estimators

PACKAGE = pathlib.Path(survmeth.__file__).parent


def checked(*arguments):
    """What the checker says, without what it counts."""
    folder = dict(os.environ, MYPYPATH=str(PACKAGE.parent))
    run = subprocess.run([sys.executable, "-m", *arguments], capture_output=True, text=True,
                         check=False, env=folder)
    return [line for line in (run.stdout + run.stderr).splitlines()
            if not line.startswith(("Found ", "Success: "))]


def findings(tmp_path, source):
    file = tmp_path / "caller.py"
    file.write_text("import survmeth\n" + source)
    return [line.partition("caller.py:")[2] for line in
            checked("mypy", "--strict", f"--cache-dir={tmp_path}", str(file))]


def test_right_calls_have_no_findings(tmp_path):
    assert findings(tmp_path, """
data = {"t": [1, 2], "e": [1, 0], "x": [0.5, 1]}
fit = survmeth.life(data, time="t", event="e", conf="log", at=[1, 2], where="t > 0")
text: str = fit.to_json(figures=True)
medians = fit.summary(width=100)
survmeth.cox("Surv(t, e) ~ x", data, ties="breslow").predict(data)
survmeth.cox(data, time="t", event="e", covariates=["x"], progress=print)
try:
    survmeth.roc(data, class_="e", marker="x")
except survmeth.RefusedInput as refused:
    row: int | None = refused.index
""") == []


def test_right_calls_of_estimators_have_no_findings(tmp_path):
    assert findings(tmp_path, """
from survmeth.sklearn import CoxRegression, FineGrayRegression, concordance_index
X, y = [[1.0], [2.0], [0.5]], [[3, 1], [2, 1], [4, 0]]
model = CoxRegression(ties="breslow", ridge=1).fit(X, y)
number: float = model.score(X, y) + concordance_index(y, model.predict(X))
text: str = model.result_.summary()
model.predict_survival(X, [1, 2])
FineGrayRegression(event=1).fit(X, y).predict_incidence(X, 2)
""") == []


def test_wrong_calls_of_estimators_are_found(tmp_path):
    found = findings(tmp_path, """
from survmeth.sklearn import CoxRegression
CoxRegression(ties="exact")
CoxRegression().fit([[1.0]])
CoxRegression(alpha=1)
""")
    found = [line for line in found if "error:" in line]
    assert [line.split(":")[0] for line in found] == ["4", "5", "6"]


def test_the_types_of_estimators_are_those_of_their_methods():
    interface = ast.parse((PACKAGE / "sklearn.pyi").read_text())
    both = [estimators.CoxRegression, estimators.FineGrayRegression]
    compared = []
    for each in interface.body:
        for method in each.body if isinstance(each, ast.ClassDef) else []:
            if not isinstance(method, ast.FunctionDef):
                continue
            for own in both if each.name == "_Regression" else [getattr(estimators, each.name)]:
                parameters = inspect.signature(getattr(own, method.name)).parameters
                assert [argument.arg for argument in method.args.args] == list(parameters)
                assert [ast.literal_eval(node) for node in method.args.defaults] \
                    == [each.default for each in parameters.values() if each.default != each.empty]
                compared.append(method.name)
    assert sorted(compared) == ["__init__", "__init__", "fit", "fit", "predict", "predict",
                                "predict_incidence", "predict_survival", "score", "score"]
    assert set(estimators.__all__) <= {getattr(each, "name", None) for each in interface.body}


def test_wrong_calls_are_found(tmp_path):
    found = findings(tmp_path, """
survmeth.agree({}, first="a", second="b", difference="cubic")
survmeth.gray({}, time="t", group="g")
survmeth.gray({}, time="t", status="e", group="g", groups="g")
number: int = survmeth.life({}, time="t", event="e").to_json()
""")
    found = [line for line in found if "error:" in line]
    assert [line.split(":")[0] for line in found] == ["3", "4", "5", "6"]
    assert "cubic" in found[0] and "[arg-type]" in found[0]
    assert "Missing named argument \"status\"" in found[1]
    assert "Unexpected keyword argument \"groups\"" in found[2]


def test_every_function_has_types():
    interface = (PACKAGE / "__init__.pyi").read_text()
    for name in survmeth.__all__:
        assert f"def {name}(" in interface or f" as {name}" in interface or f"{name}: " in interface
    assert (PACKAGE / "py.typed").exists()
