"""The examples of docs/python.md run, from the root of the tree."""

import doctest

from cases import ROOT


def test_the_examples_of_the_page(monkeypatch):
    monkeypatch.chdir(ROOT)
    made = doctest.testfile(str(ROOT / "docs" / "python.md"), module_relative=False)
    assert made.attempted >= 9
    assert made.failed == 0
