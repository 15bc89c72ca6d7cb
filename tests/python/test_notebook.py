"""The notebooks of examples run from beginning to end, and show what they say."""

import pathlib

import nbclient
import nbformat
import pytest

import survmeth
from cases import ROOT

FOLDER = ROOT / "examples" / "notebooks"
NOTEBOOKS = sorted(FOLDER.glob("*.ipynb"))


@pytest.fixture(name="run", scope="module", params=NOTEBOOKS, ids=lambda path: path.name)
def run_of(request, tmp_path_factory):
    notebook = nbformat.read(request.param, as_version=4)
    nbformat.validate(notebook)
    client = nbclient.NotebookClient(notebook, timeout=120, kernel_name="python3",
                                     resources={"metadata": {"path": str(FOLDER)}})
    with pytest.MonkeyPatch.context() as patch:
        for folder in ("IPYTHONDIR", "JUPYTER_RUNTIME_DIR", "JUPYTER_CONFIG_DIR", "MPLCONFIGDIR"):
            patch.setenv(folder, str(tmp_path_factory.mktemp(folder)))
        patch.setenv("PYTHONPATH", str(pathlib.Path(survmeth.__file__).parents[1]))
        return client.execute()


def outputs(run):
    return [output for cell in run.cells if cell.cell_type == "code" for output in cell.outputs]


def shown(run):
    """All texts, as a reader of the page sees them."""
    texts = [output.get("text", "") for output in outputs(run)]
    texts += [output["data"].get("text/plain", "") for output in outputs(run) if "data" in output]
    return "\n".join(texts)


def test_there_are_notebooks():
    assert NOTEBOOKS


@pytest.mark.parametrize("path", NOTEBOOKS, ids=lambda path: path.name)
def test_notebooks_are_kept_without_outputs(path):
    cells = [cell for cell in nbformat.read(path, as_version=4).cells if cell.cell_type == "code"]
    assert all(not cell.outputs and cell.execution_count is None for cell in cells)


def test_every_cell_runs_without_a_warning(run):
    assert [output for output in outputs(run) if output.output_type == "error"] == []
    # What comes by stderr is a warning.
    assert [output for output in outputs(run) if output.get("name") == "stderr"] == []


def test_every_figure_is_drawn(run):
    drawn = sum(cell.source.count("plt.show()") or ".plot(" in cell.source
                for cell in run.cells if cell.cell_type == "code")
    pictures = [output for output in outputs(run) if "image/png" in output.get("data", {})]
    assert len(pictures) == drawn >= 4


def test_a_result_shows_its_report(run):
    pages = [output["data"]["text/html"] for output in outputs(run)
             if "text/html" in output.get("data", {})]
    assert any(page.startswith("<iframe sandbox") and "Proportional hazards?" in page
               for page in pages)


def test_the_numbers_are_those_of_r(run):
    """Of survival 3.5-3: medians by sex, the log-rank test (10.3), the hazard ratio of men; a row
    lacks ph.ecog."""
    text = shown(run)
    for number in ("270.0", "426.0", "10.326742", "1.737787", "1 of 228 rows left out"):
        assert number in text
