# Front door of the project. Every target installs missing Debian packages first (scripts/install-deps).
BUILD_DIR ?= build
ASAN_DIR ?= build-asan
JOBS ?= $(shell nproc)
DEMO_DIR ?= demo-out

.PHONY: all deps configure build test sanitize-test unit-test demo bench format clean

all: build

deps:
	@bash scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

# The parser and tree tests again under AddressSanitizer and UndefinedBehaviorSanitizer.
sanitize-test: deps
	@cmake -S . -B $(ASAN_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUMO_SANITIZE=ON -DLUMO_BUILD_BENCHMARKS=OFF >/dev/null
	@cmake --build $(ASAN_DIR) --target lumo_sanitize_tests -j $(JOBS)
	@ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir $(ASAN_DIR) -L sanitize --output-on-failure -j $(JOBS)

unit-test: build
	@ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

# Sanitizer pass first, so that the last summary line is the whole suite's.
test: sanitize-test unit-test

demo: build
	@bash scripts/demo $(BUILD_DIR) $(DEMO_DIR)

bench: build
	@bash scripts/bench $(BUILD_DIR)

format:
	@git ls-files '*.h' '*.cpp' '*.hxx' '*.txx' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR) $(ASAN_DIR) $(DEMO_DIR)

# The cohort workflow on a test cohort of phantoms (made once in $(COHORT_DIR)/CASES); reruns do only what changed.
COHORT_DIR ?= cohort-out
.PHONY: cohort
cohort: build
	@[ -d $(COHORT_DIR)/CASES ] || ARBO=$(abspath $(BUILD_DIR))/Apps/arbo/arbo bash scripts/make-cohort $(COHORT_DIR)/CASES
	@cd $(COHORT_DIR) && snakemake -s $(CURDIR)/workflows/cohort/Snakefile --cores $(JOBS) \
	  --config cases=CASES results=results arbo=$(abspath $(BUILD_DIR))/Apps/arbo/arbo
