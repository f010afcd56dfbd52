"""Planted faults: each still fits the source, and one that the tests let through is told."""

import pytest
from soak import planted_faults
from soak.planted_faults import EVERYTHING, FAULTS, SOURCES, Fault, Tree, judged, report

ALL = planted_faults.read_faults(FAULTS)
CODE = "int a = 1;\nint b = 2;\n"


def test_there_are_faults_in_every_unit():
    units = {path.stem for path in (planted_faults.ROOT / SOURCES).glob("*.cpp")}
    planted = {fault.file.split(".")[0] for fault in ALL}
    assert len(ALL) >= 80
    assert units - planted <= set()
    assert len(set(map(str, ALL))) == len(ALL)


@pytest.mark.parametrize("fault", ALL, ids=str)
def test_every_fault_still_fits(fault):
    assert planted_faults.not_applicable(fault) == []


class Scripted(Tree):
    """A tree whose tests notice that `a` isn't 1 any more; it builds unless told otherwise."""

    def __init__(self, tmp_path, notices=("tests/test_a.py", *EVERYTHING), fails=()):
        self.root = tmp_path
        self.path = tmp_path / SOURCES / "unit.cpp"
        self.path.parent.mkdir(parents=True)
        self.path.write_text(CODE)
        self.notices, self.fails = notices, fails
        self.ran = []
        self._sound = set()

    def build(self):
        self.built = self.path.read_text()
        if "int c" in self.built:
            raise RuntimeError("unit.cpp: error: c")

    def noticed_by(self, tests):
        self.ran.append((*tests, self.built == CODE))
        if set(tests) & set(self.fails):
            return "always fails"
        return "" if "int a = 1;" in self.built or not set(tests) & set(self.notices) else "a"


def fault(old, new, *tests):
    return Fault("unit", "unit.cpp", old, new, "something", tests)


class TestJudgement:
    def test_a_fault_is_found_by_the_tests_that_are_likely_to(self, tmp_path):
        tree = Scripted(tmp_path)
        verdict = judged(fault("a = 1", "a = 2", "tests/test_a.py"), tree)
        assert (verdict.kind, verdict.why) == ("found", "a")
        assert tree.ran == [("tests/test_a.py", True), ("tests/test_a.py", False)]
        assert tree.path.read_text() == CODE

    def test_or_by_the_whole_suite(self, tmp_path):
        tree = Scripted(tmp_path, notices=EVERYTHING)
        assert judged(fault("a = 1", "a = 2", "tests/test_a.py"), tree).kind == "found"
        assert [tests for tests, _ in tree.ran[-2:]] == ["tests", "tests"]

    def test_a_change_that_nothing_notices_survives_and_fails_the_run(self, tmp_path, capsys):
        tree = Scripted(tmp_path)
        faults = [fault("a = 1", "a = 2"), fault("b = 2;", "b = 2;  // two", "tests/test_a.py")]
        assert report(faults, (judged(each, tree) for each in faults)) == 1
        said = capsys.readouterr().out.splitlines()
        assert "SURVIVED unit: something" in said
        assert said[-1] == "planted faults: 1 of 2 found"

    def test_a_run_that_finds_all_is_good(self, tmp_path, capsys):
        faults = [fault("a = 1", "a = 2")]
        tree = Scripted(tmp_path)
        assert report(faults, (judged(each, tree) for each in faults)) == 0
        assert capsys.readouterr().out.endswith("planted faults: 1 of 1 found\n")

    def test_a_fault_that_does_not_build_is_not_found(self, tmp_path):
        tree = Scripted(tmp_path)
        verdict = judged(fault("a = 1", "c = 1"), tree)
        assert verdict.kind == "ERROR" and "unit.cpp: error: c" in verdict.why
        assert tree.path.read_text() == CODE

    def test_tests_that_fail_without_a_fault_find_nothing(self, tmp_path):
        tree = Scripted(tmp_path, fails=["tests/test_a.py"])
        with pytest.raises(RuntimeError, match="without any fault: always fails"):
            judged(fault("a = 1", "a = 2", "tests/test_a.py"), tree)


@pytest.mark.parametrize("old", ["a = 3", "int", "a = 1"])
def test_a_fault_that_does_not_fit_is_an_error(tmp_path, old):
    tree = Scripted(tmp_path)
    planted = fault(old, "a = 1" if old == "a = 1" else "a = 2")
    with pytest.raises(ValueError, match="occurs"):
        planted.put_into(CODE)
    (verdict,) = planted_faults.not_applicable(planted, tree.root)
    assert verdict.kind == "ERROR"


def test_tests_that_are_not_there_are_an_error():
    (verdict,) = planted_faults.not_applicable(ALL[0]._replace(tests=("tests/test_none.py",)))
    assert verdict.kind == "ERROR" and "test_none" in verdict.why


class TestWhatTestsSay:
    """Of a suite of one test, in a tree without anything else."""

    @pytest.fixture
    def noticed(self, tmp_path):
        def run(test):
            tree = Tree.__new__(Tree)
            tree.root = tmp_path
            (tmp_path / "test_it.py").write_text(test)
            return tree.noticed_by(["test_it.py"])

        return run

    def test_nothing(self, noticed):
        assert noticed("def test(): pass") == ""

    def test_a_failure(self, noticed):
        assert noticed("def test(): assert 1 == 2").startswith("test_it.py::test")

    def test_an_error_in_a_file_of_tests(self, noticed):
        assert "test_it.py" in noticed("import nothing_of_the_kind")

    def test_a_crash(self, noticed):
        assert noticed("import os\ndef test(): os.abort()") == "ended by signal 6"

    def test_no_end(self, noticed, monkeypatch):
        monkeypatch.setattr(planted_faults, "PATIENCE", 2.0)
        assert noticed("import time\ndef test(): time.sleep(60)") == "not finished after 2 s"

    def test_no_tests_at_all(self, noticed):
        with pytest.raises(RuntimeError, match="exit status 5"):
            noticed("")
