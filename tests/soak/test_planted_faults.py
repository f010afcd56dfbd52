"""Generated faults: what the rules make of code, and what becomes of each."""

import sys

import pytest
from soak import planted_faults
from soak.common.changes import changes_in
from soak.planted_faults import SOURCES, Likely, Run, Tree, fault_of, sample

CODE = """#include <cmath>  // "1 < 2"
void f(int a, int b) {
  if (a < 1 && !b) {
    g("name"_n, a);
    return;
  }
  h(a + b);  // 1 + 1
}
"""


def made(code=CODE):
    """The changed lines by kind."""
    found = {}
    for change in changes_in(code):
        found.setdefault(change.kind, []).append(fault_of("a.cpp", code, change).new)
    return found


def test_every_kind_of_change_is_made_where_there_is_a_place_for_it():
    changes = made()
    assert changes["operator"] == [
        "if (a <= 1 && !b) {",
        "if (a < 1 || !b) {",
        "h(a - b); // 1 + 1",
    ]
    assert changes["number"] == ["if (a < 0 && !b) {"]
    assert changes["sign"] == ["if (a < 1 && b) {"]
    assert changes["name"] == ['g("namex"_n, a);']
    assert changes["condition"] == ["if (!(a < 1 && !b)) {"]
    assert changes["exchange"] == ["void f(int b, int a) {", 'g(a, "name"_n);']
    assert len(changes["statement"]) == 3
    assert made("return true;\n")["word"] == ["return false;"]


def test_every_change_changes_something():
    for path in sorted((planted_faults.ROOT / SOURCES).rglob("*.cpp")):
        text = path.read_text()
        changes = list(changes_in(text))
        assert changes, path
        assert [change for change in changes if change.made_in(text) == text] == []


def test_a_seed_gives_the_same_faults_and_each_kind_as_often():
    sources = planted_faults.ROOT / SOURCES
    some = [next_of for next_of, _ in zip(sample(sources, 5), range(400))]
    assert some == [next_of for next_of, _ in zip(sample(sources, 5), range(400))]
    assert some != [next_of for next_of, _ in zip(sample(sources, 6), range(400))]
    kinds = [fault.kind for fault in some]
    assert min(map(kinds.count, set(kinds))) > 20
    assert {fault.file for fault in sample(sources, 5, "view")} == {"view.cpp"}


def test_what_is_argued_still_stands_in_the_sources():
    for (file, change), reason in planted_faults.argued_in(planted_faults.ARGUED).items():
        made_of_file = {
            fault.key for fault in sample(planted_faults.ROOT / SOURCES, 0, f"^{file}$")
        }
        assert (file, change) in made_of_file
        assert len(reason) > 40


class Scripted(Tree):
    """A tree that "builds" by copying the text; its tests notice unless told otherwise."""

    def __init__(self, root, lets_pass=()):
        self.root, self.tests, self.lets_pass, self.ran = root, ["tests"], lets_pass, []
        self._sound, self.ids = set(), {"tests/test_a.py::test"}
        self.path = root / SOURCES / "a.cpp"
        self.path.parent.mkdir(parents=True)
        self.path.write_text(CODE)
        for module in root / planted_faults.MODULE, self.sound_file():
            module.parent.mkdir(parents=True)
        self.build()
        self.sound_file().write_text((root / planted_faults.MODULE).read_text())

    def build(self):
        text = self.path.read_text()
        if "int b, int a" in text:
            raise RuntimeError("a.cpp: error")
        (self.root / planted_faults.MODULE).write_text(text)

    def failed(self, build, tests):
        self.ran.append((build, *tests))
        passes = build != "build" or any(text in self.path.read_text() for text in self.lets_pass)
        return "" if passes else "tests/test_a.py::test"


@pytest.fixture
def judged(tmp_path, monkeypatch, capsys):
    """What a run of all faults tells, given what the tests let pass and what is argued."""

    def run(*lets_pass, argued=None):
        monkeypatch.setattr(planted_faults, "argued_in", lambda path: argued or {})
        tree = Scripted(tmp_path / "tree", lets_pass)
        done = Run(sample(tmp_path / "tree" / SOURCES, 1), 50, Likely(tmp_path / "likely.json"))
        done.on([tree])
        assert tree.path.read_text() == CODE
        return done.counts, capsys.readouterr().out, tree

    return run


def test_faults_are_noticed_survive_or_are_not_counted(judged):
    counts, told, tree = judged("h(a - b)")
    assert counts["SURVIVED"] == 1 and "SURVIVED a.cpp:7: operator: h(a + b); // 1 + 1  ->" in told
    assert counts["not compiled"] == 1
    assert counts["noticed"] > 5
    assert ("build", "tests") in tree.ran


def test_what_is_argued_is_not_tried(judged):
    key = "a.cpp", "h(a + b); // 1 + 1  ->  h(a - b); // 1 + 1"
    counts, told, _ = judged("h(a - b)", argued={key: "because"})
    assert (counts["SURVIVED"], counts["argued"]) == (0, 1)
    assert "because" in told


def test_the_tests_that_noticed_are_tried_first(tmp_path):
    tree = Scripted(tmp_path)
    fault = fault_of("a.cpp", CODE, next(changes_in(CODE)))
    likely = Likely(tmp_path / "likely.json")
    for test in "tests/test_gone.py::test", "tests/test_a.py::test":
        likely.learn(planted_faults.Verdict(fault, "noticed", test))
    kept = Likely(tmp_path / "likely.json")
    assert kept.of("a.cpp") == kept.of("b.cpp")
    tree.judged(fault, kept.of("a.cpp"))
    assert tree.ran[0] == ("build", "tests/test_a.py::test")


class TestWhatTestsSay:
    """Of a suite of one test, in a tree without anything else."""

    @pytest.fixture
    def noticed(self, tmp_path, tree):
        def run(test):
            (tmp_path / "test_it.py").write_text(test)
            return tree.noticed_by(tree.tests)

        return run

    @pytest.fixture
    def tree(self, tmp_path):
        tree = Tree.__new__(Tree)
        tree.root, tree.tests, tree._sound = tmp_path, ["test_it.py"], {"test_it.py"}
        return tree

    def test_nothing(self, noticed):
        assert noticed("def test(): pass") == ""

    def test_a_failure(self, noticed):
        assert noticed("def test(): assert 1 == 2") == "test_it.py::test"

    def test_an_error_in_a_file_of_tests(self, noticed):
        assert "test_it.py" in noticed("import nothing_of_the_kind")

    def test_a_crash(self, noticed):
        assert noticed("import os\ndef test(): os.abort()") == "ended by signal 6"

    def test_no_end(self, noticed, tmp_path, monkeypatch):
        (tmp_path / "pytest.ini").write_text("[pytest]\ntimeout_method = thread\n")
        monkeypatch.setattr(planted_faults, "MOST_SECONDS", 2.0)
        assert "Timeout" in noticed("import time\ndef test(): time.sleep(60)")

    def test_what_does_not_load_without_a_fault_ends_the_run(self, tmp_path, tree):
        (tmp_path / "test_it.py").write_text("def test(): pass\ndef test_too(): pass")
        assert tree.collected() == {"test_it.py::test", "test_it.py::test_too"}
        (tmp_path / "test_it.py").write_text("import nothing_of_the_kind")
        with pytest.raises(SystemExit, match="without any fault"):
            tree.collected()

    def test_no_tests_at_all(self, noticed):
        with pytest.raises(SystemExit, match="exit status 5"):
            noticed("")

    def test_a_python_without_pytest(self, noticed, tmp_path, monkeypatch):
        python = tmp_path / "python"
        python.write_text("#!/bin/sh\nexit 1\n")
        python.chmod(0o755)
        monkeypatch.setattr(sys, "executable", str(python))
        with pytest.raises(SystemExit, match="exit status 1"):
            noticed("def test(): pass")

    def test_tests_that_fail_without_a_fault_find_nothing(self, tmp_path):
        tree = Scripted(tmp_path)
        (tmp_path / "tests").mkdir()
        (tmp_path / "tests" / "test_a.py").touch()
        tree.failed = lambda *arguments: "tests/test_a.py::test"
        with pytest.raises(SystemExit, match="fails without any fault"):
            tree.noticed_by(["tests"])
