"""Drawings that are broken in three ways at once, many of them."""

import random

import pytest
from support.breaking import BREAKS, misread
from tandrel.exchange import OutlineOpen

SEEDS = 2000
MOST_ASKED = SEEDS // 200  # where the outline is in so many pieces that only the user can tell


@pytest.mark.timeout(600)
def test_parts_come_in_whole_or_their_outline_is_asked_about():
    asked = 0
    for seed in range(SEEDS):
        ways = random.Random(seed).sample(BREAKS, 3)
        try:
            assert misread(seed, ways) is None, (seed, [way.__name__ for way in ways])
        except OutlineOpen:
            asked += 1
    assert asked <= MOST_ASKED
