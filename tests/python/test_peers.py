"""lifelines, scikit-survival and R give the same numbers, or docs/coming-from.md says why not."""

import functools
import re

import pytest

import peers
from cases import ROOT

PAGE = (ROOT / "docs" / "coming-from.md").read_text()
THEIRS = peers.theirs()
DIGITS = 1e-6  # what the page promises; the programs stop their iterations some 1e-9 from the maximum


@functools.cache
def ours():
    return peers.ours()


def kind_of(quantity):
    """Of "cox coef 2": "cox coef"."""
    return re.sub(r" [0-9]$", "", quantity)


def rows():
    """By program and kind, what the page shows of those that differ."""
    table = PAGE.partition("## Where numbers differ")[2]
    cells = [[cell.strip() for cell in line.strip("|").split("|")]
             for line in table.splitlines() if line.startswith("| ")][1:]
    return {(program, quantity): (there, here, why) for program, quantity, there, here, why in cells}


EXPLAINED = rows()


def first_of(program, kind):
    return next(quantity for peer, quantity in THEIRS
                if peer == program and kind_of(quantity) == kind)


@pytest.mark.parametrize("program, quantity", [
    key for key in THEIRS if (key[0], kind_of(key[1])) not in EXPLAINED])
def test_the_numbers_agree(program, quantity):
    assert ours()[quantity] == pytest.approx(THEIRS[program, quantity], rel=DIGITS, abs=0)


def rounded(number, shown):
    decimals = len(shown.partition(".")[2])
    return f"{number:.{decimals}f}"


@pytest.mark.parametrize("program, kind", EXPLAINED)
def test_numbers_that_differ_are_those_of_the_page(program, kind):
    quantity = first_of(program, kind)
    there, here, _ = EXPLAINED[program, kind]
    assert rounded(THEIRS[program, quantity], there) == there
    assert rounded(ours()[quantity], here) == here
    assert there != here


@pytest.mark.parametrize("program, kind", EXPLAINED)
def test_what_is_explained_differs(program, kind):
    assert any(ours()[quantity] != pytest.approx(number, rel=DIGITS, abs=0)
               for (peer, quantity), number in THEIRS.items()
               if peer == program and kind_of(quantity) == kind)


@pytest.mark.parametrize("key", peers.as_there(), ids=" ".join)
def test_the_arguments_on_the_page_give_their_numbers(key):
    # scikit-survival's default stops some 1e-9 of the log-likelihood from its maximum.
    assert peers.as_there()[key] == pytest.approx(THEIRS[key], rel=DIGITS, abs=0)
    why = EXPLAINED[key[0], kind_of(key[1])][2]
    assert "=" in why or why == "likewise"


def test_their_test_of_proportional_hazards_is_what_the_page_says():
    for i, value in enumerate(peers.averaged_zph()):
        assert value == pytest.approx(THEIRS["lifelines", f"cox zph identity {i}"], rel=DIGITS)


def test_some_hundred_numbers_are_compared():
    agreeing = [key for key in THEIRS if (key[0], kind_of(key[1])) not in EXPLAINED]
    assert len(agreeing) > 100


def test_every_argument_on_the_page_is_one():
    import survmeth
    from survmeth._functions import declared
    from survmeth._names import argument_of

    known = {"data", *survmeth._functions.SHARED}
    for analysis in declared()["analyses"]:
        for each in (analysis, analysis.get("predict", {"options": []})):
            known |= {argument_of(option["name"]) for option in each["options"]}
    here = [line.split(" | ")[-1] for line in PAGE.splitlines() if line.startswith("| ")]
    for cell in here:
        for code in re.findall(r"`([^`]*)`", cell):
            for argument in re.findall(r"(?<![<>=!])\b([a-z_]+)=", code):
                assert argument in known, (argument, code)
