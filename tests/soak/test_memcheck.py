"""The runs under valgrind: what it finds, with a frame of the module, counts."""

import shutil

import pytest
from soak import memcheck
from support.planted_build import plant

pytestmark = pytest.mark.skipif(not shutil.which("valgrind"), reason="needs valgrind")


@pytest.mark.parametrize("fault, said", [("value never set", "uninitialised value"), (None, "")])
def test_an_error_of_the_module_is_found(capsys, monkeypatch, tmp_path, fault, said):
    if fault:
        monkeypatch.setattr(memcheck, "BUILD", plant(fault, memcheck.BUILD, tmp_path))
    status = memcheck.main(["--only", "operations"])
    printed = capsys.readouterr().out
    figure = printed.splitlines()[-1]
    assert status == (1 if fault else 0), printed
    assert figure.startswith("memcheck: operations: ")
    assert figure.startswith("memcheck: operations: 0 errors") is (fault is None)
    assert said in printed


LOG = """
==7== Memcheck, a memory error detector
==7==
==7== Conditional jump or move depends on uninitialised value(s)
==7==    at 0x1: f (in /usr/lib/libtk8.6.so)
==7==
==7== Invalid read of size 8
==7==    at 0x2: PyList_Size (in /usr/bin/python3.11)
==7==    by 0x3: tandrel::py::Ref::size() const (object.cpp:9)
==7==  Address 0x4 is 8 bytes inside a block of size 56 free'd
==7==    at 0x5: free (in /usr/lib/vgpreload.so)
==7==
==7== Invalid write of size 4
==7==    at 0x6: ??? (in /x/sketcher.abi3.so)
"""


def test_errors_of_others_are_told_and_do_not_count(tmp_path):
    (tmp_path / "7.log").write_text(LOG)
    ours, others = memcheck.read(tmp_path)
    assert [error.splitlines()[0] for error in ours] == [
        "Invalid read of size 8",
        "Invalid write of size 4",
    ]
    assert "inside a block" in ours[0]
    assert others == 1
