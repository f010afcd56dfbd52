"""One file for every interpreter: the same dialog in each, and what the file asks of them."""

import re
import shutil
import subprocess
import sys

import pytest
from harness.places import BUILD, ROOT
from support.interpreters import DEVELOPER_MODE, nearly_equal, walk_through

MODULE_FILE = BUILD / "tandrel" / "gui" / "sketcher.abi3.so"
STABLE_SYMBOLS = ROOT / "tests" / "support" / "stable_abi_3_9.txt"

# --- every interpreter


@pytest.fixture(scope="module")
def reference_walkthrough(display):
    """The outcome of the walkthrough in this interpreter, with its numpy."""
    return walk_through(sys.executable, path=[BUILD])


def test_walkthrough_in_this_interpreter(reference_walkthrough):
    outcome = reference_walkthrough
    assert [e["type"] for e in outcome["result"]["entities"]] == [
        "rectangle",
        "regular",
        "slot",
        "polygon",
    ]
    assert outcome["result"]["entities"][0]["w"] == 0.012
    assert outcome["result"]["entities"][1]["n"] == 5
    assert outcome["rows"] == ["1. Rectangle", "2. Circle", "3. Polygon", "4. Slot", "5. Outline"]
    assert outcome["texts"] == [
        "",
        "",
        "",
        "Not applied: could not convert string to float: 'x'",
        "",
        "Not applied: each corner needs two numbers",
        "refused",
    ]
    assert len(outcome["pictures"]) == 7
    assert outcome["nested"] == "RecursionError"
    assert outcome["windows"] == 0
    assert outcome["errors"] == []


def test_walkthrough_is_the_same_everywhere(any_interpreter, reference_walkthrough):
    """In developer mode, which has the debug allocator; without, that of the wheel is tried."""
    outcome = walk_through(any_interpreter, *DEVELOPER_MODE, path=[BUILD])
    assert nearly_equal(outcome, reference_walkthrough)


# --- the file


def symbols(file, *options):
    """The names in a symbol table, without their versions."""
    assert shutil.which("nm"), "nm reads the symbols: install binutils"
    listing = subprocess.run(
        ["nm", "-D", "--format=posix", *options, str(file)],
        capture_output=True,
        text=True,
        check=True,
    ).stdout
    return {line.split()[0].split("@")[0] for line in listing.splitlines()}


def wanted_symbols():
    return {s for s in symbols(MODULE_FILE, "--undefined-only") if re.match("_?Py", s)}


def test_symbols_are_in_the_stable_interface_of_3_9():
    stable = set(STABLE_SYMBOLS.read_text().split())
    wanted = wanted_symbols()
    assert "PyModuleDef_Init" in wanted
    assert wanted - stable == set()


def test_symbols_are_in_every_interpreter(interpreter):
    version = ".".join(interpreter.parent.parent.name.split(".")[:2])
    libraries = sorted(interpreter.parent.parent.glob(f"lib/libpython{version}*.so*"))
    offered = symbols(libraries[0] if libraries else interpreter, "--defined-only")
    assert wanted_symbols() - offered == set()


def test_module_offers_its_initialisation_and_no_other_symbol():
    assert symbols(MODULE_FILE, "--defined-only", "--extern-only") == {"PyInit_sketcher"}


def test_module_does_not_bring_an_interpreter_of_its_own():
    assert shutil.which("readelf"), "readelf reads the needed libraries: install binutils"
    listing = subprocess.run(
        ["readelf", "-d", str(MODULE_FILE)], capture_output=True, text=True, check=True
    ).stdout
    assert "libpython" not in listing
