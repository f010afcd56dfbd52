"""Sound parts whose drawings are broken in every way, and in every two ways, come in whole."""

from itertools import combinations

import pytest
from support.breaking import BREAKS, GAPS, doubled_lines, misread

WAYS = [(one,) for one in BREAKS]
WAYS += [pair for pair in combinations(BREAKS, 2) if not set(pair) <= set(GAPS)]


@pytest.mark.parametrize(
    "seed, ways", enumerate(WAYS), ids=["-".join(way.__name__ for way in ways) for ways in WAYS]
)
def test_parts_come_in_whole(seed, ways):
    assert misread(seed, ways) is None


def test_near_doubles_go_before_gaps_are_closed_over_them():
    """Of this part the copies of lines, off by as much as the gaps, would take the ends."""
    assert misread(677, [GAPS[0], doubled_lines, GAPS[2]]) is None
