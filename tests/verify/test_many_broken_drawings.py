"""Drawings that are broken in three ways at once, many of them."""

import random

import pytest
from support.breaking import BREAKS, misread
from tandrel.exchange import OutlineOpen

AT_ONCE = 250  # within the time that a test has on a busy machine
MOST_ASKED = 2  # where the outline is in so many pieces that only the user can tell


@pytest.mark.parametrize("first", range(0, 2000, AT_ONCE))
def test_parts_come_in_whole_or_their_outline_is_asked_about(first):
    asked = 0
    for seed in range(first, first + AT_ONCE):
        ways = random.Random(seed).sample(BREAKS, 3)
        try:
            assert misread(seed, ways) is None, (seed, [way.__name__ for way in ways])
        except OutlineOpen:
            asked += 1
    assert asked <= MOST_ASKED
