# Short names over one CMake build. Each installs what it needs when it is missing (Debian's
# packages, as root or with sudo).
PYTHON := /usr/bin/python3
MODULE := build/tandrel/gui/sketcher.abi3.so

.DEFAULT_GOAL := build
.PHONY: run test build check bench soak wheel pictures clean

## run: the stand-in application on a mounting flange; without a display, a replayed session
run: build
	@scripts/ensure-packages run
	$(PYTHON) demo/run.py

## test: everything, on displays of its own; the module's own tests with sanitizers too
test: build
	@scripts/ensure-packages run wheel test
	$(PYTHON) -m pytest tests -n auto --dist loadfile
	$(PYTHON) soak/sanitizers.py --coverage $(sort $(wildcard tests/test_*.py))

## build: the module, as build/tandrel/gui/sketcher.abi3.so
build:
	@scripts/ensure-packages build
	@test -f build/build.ninja || cmake --preset release
	cmake --build --preset release

## check: format, warnings, static analysis, types, duplication
check: build
	@scripts/ensure-packages run test check
	scripts/check

## bench: what it costs, as ratios of things measured side by side
bench: build
	@scripts/ensure-packages run bench
	$(PYTHON) benchmarks/run.py
	$(PYTHON) benchmarks/instructions.py

## soak: everything that tries to break the editor, at full size; two hours
soak: build
	@scripts/ensure-packages run bench wheel test
	$(PYTHON) soak/run.py

## wheel: the module and its types, for any interpreter from 3.9 on, in build/wheels/
wheel: build
	@scripts/ensure-packages wheel
	$(PYTHON) -m pip wheel --quiet --no-build-isolation --no-deps --wheel-dir build/wheels .

## pictures: those of the manual, made by the running editor
pictures: build
	@scripts/ensure-packages run
	$(PYTHON) docs/pictures.py

clean:
	rm -rf build
