"""What Python returns is what the command line prints, byte for byte."""

import numpy as np
import pandas
import pytest

from cases import cases, columns_of

CASES = cases()


def test_most_analyses_have_such_a_case():
    assert len({case.analysis["name"] for case in CASES}) >= 6
    assert len(CASES) >= 14


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
def test_lists_give_the_bytes_of_the_command_line(case):
    assert case.call(columns_of(case.path)).to_json() == case.printed


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
def test_arrays_give_the_bytes_of_the_command_line(case):
    columns = columns_of(case.path)
    arrays = {}
    for name, cells in columns.items():
        numeric = all(cell is None or isinstance(cell, float) for cell in cells)
        arrays[name] = np.array(cells, dtype=np.float64 if numeric else object)
    assert case.call(arrays).to_json() == case.printed


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
def test_data_frames_give_the_bytes_of_the_command_line(case):
    assert case.call(pandas.DataFrame(columns_of(case.path))).to_json() == case.printed
