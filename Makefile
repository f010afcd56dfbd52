# Short names over one CMake build. Each installs what it needs when it is missing (Debian's
# packages, as root or with sudo).
PYTHON := /usr/bin/python3
# One worker more than there are cores: tests wait for windows and programs a third of their time.
PARALLEL := -q -n $(shell expr $$(nproc) + 1) --dist loadfile
MAKE_WHEEL = $(PYTHON) -m pip wheel --quiet --no-build-isolation --no-deps --wheel-dir build/wheels .

.DEFAULT_GOAL := build
.PHONY: run test verify build check bench soak wheel wheels pictures clean

## run: the stand-in application on a mounting flange; without a display, a replayed session
run: build
	@scripts/ensure-packages run
	$(PYTHON) demo/run.py

## test: the module and the application, on displays of their own; two minutes
test: build
	@scripts/ensure-packages run test
	$(PYTHON) -m pytest tests $(PARALLEL) --ignore=tests/verify --ignore=tests/soak

## verify: what takes longer: sanitizers, the tools of soak/ at a short size, the wheel in every
## interpreter, types, pictures, benchmarks
verify: build
	@scripts/ensure-packages run test wheel verify
	$(PYTHON) -m soak sanitizers $(sort $(wildcard tests/test_*.py))
	$(PYTHON) -m pytest tests/verify tests/soak $(PARALLEL)

## build: the module, as build/tandrel/gui/sketcher.abi3.so
build:
	@scripts/ensure-packages build
	@test -f build/build.ninja || cmake --preset release -DPython3_EXECUTABLE=$(PYTHON)
	cmake --build --preset release

## check: format, warnings, static analysis, types, duplication
check: build
	@scripts/ensure-packages run check
	scripts/check

## bench: what it costs, as ratios of things measured side by side
bench: build
	@scripts/ensure-packages run bench
	@$(PYTHON) benchmarks/run.py; held=$$?; $(PYTHON) benchmarks/instructions.py && exit $$held

## soak: everything that tries to break the editor, at full size; two hours. Some of it: soak-hostile
SOAK := coverage opening hostile random_user allocation sanitizers memcheck planted_faults
soak: build
	@scripts/ensure-packages run test wheel verify bench
	@$(MAKE) --no-print-directory --keep-going $(SOAK:%=soak-%)

soak-coverage: OPTIONS = --jobs 2
soak-opening: OPTIONS = --cycles 10000
soak-hostile: OPTIONS = --cases 200000 --jobs 2
soak-random_user: OPTIONS = --events 1000000 --jobs 2
soak-sanitizers: OPTIONS = --with 'random_user --events 20000'
soak-memcheck: OPTIONS = --events 2000
soak-planted_faults: OPTIONS = --faults 300 --jobs 2

# The last line is the figure; all that a tool prints lies in build/soak/.
soak-%:
	@mkdir -p build/soak
	@$(PYTHON) -m soak $* $(OPTIONS) > build/soak/$*.txt; ended=$$?; \
		tail -1 build/soak/$*.txt; exit $$ended

## wheel: the module and its types, for any interpreter from 3.9 on, in build/wheels/
wheel:
	@scripts/ensure-packages build wheel
	@rm -rf build/wheels
	$(MAKE_WHEEL)
	@test -f build/wheels/*-manylinux_*.whl || \
		echo "This wheel is for systems as new as this one; those for every Linux are made on Debian 12."

## wheels: that, and another for arm64
wheels: wheel
	@scripts/ensure-packages arm64
	CMAKE_TOOLCHAIN_FILE=$(CURDIR)/scripts/arm64.cmake _PYTHON_HOST_PLATFORM=linux-aarch64 $(MAKE_WHEEL)

## pictures: those of the manual, made by the running editor
pictures: build
	@scripts/ensure-packages run
	$(PYTHON) docs/pictures.py

clean:
	rm -rf build
