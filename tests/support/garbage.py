"""Collecting garbage, again and again."""

import gc

import pytest


@pytest.fixture(autouse=True, scope="module")
def only_what_is_new():
    """What is there before a module's tests isn't looked through each time they collect."""
    gc.collect()
    gc.freeze()
    yield
    gc.unfreeze()
