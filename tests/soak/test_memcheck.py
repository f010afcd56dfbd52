"""The runs under valgrind: what it finds, with a frame of the module, counts."""

import shutil

import pytest
from soak import memcheck

pytestmark = pytest.mark.skipif(not shutil.which("valgrind"), reason="needs valgrind")


@pytest.mark.parametrize("fault, said", [("value never set", "uninitialised value"), (None, "")])
def test_an_error_of_the_module_is_found(capsys, fault, said):
    options = ["--only", "operations", *(["--plant", fault] if fault else [])]
    status = memcheck.main(options)
    printed = capsys.readouterr().out
    figure = printed.splitlines()[-1]
    assert status == (1 if fault else 0), printed
    assert figure.startswith("memcheck: operations: ")
    assert figure.startswith("memcheck: operations: 0 errors") is (fault is None)
    assert said in printed


def test_errors_of_others_are_told_and_do_not_count(tmp_path):
    frames = "<frame><ip>0x1</ip><obj>{}</obj><fn>f</fn></frame>"
    error = "<error><kind>{}</kind><what>w</what><stack>" + frames + "</stack></error>"
    (tmp_path / "1.xml").write_text(
        "<valgrindoutput>"
        + error.format("UninitCondition", "/usr/lib/libtk8.6.so")
        + error.format("Leak_DefinitelyLost", "/x/sketcher.abi3.so")
        + error.format("InvalidRead", "/x/sketcher.abi3.so")
        + "<error><kind>of a process that was killed"
    )
    assert memcheck.read(tmp_path) == (["w\n    f"], 1)
