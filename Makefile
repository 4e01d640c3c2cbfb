# Set-up, build, run and test in one command each; see README.md.
BUILD ?= build
ASAN_BUILD ?= build-asan
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

# Leak reports of Qt's and the system's own start-up allocations are
# suppressed (scripts/lsan.supp); everything else fails the test.
SANITIZER_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

.PHONY: all deps configure build run run-glider package test test-plain test-asan clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# The run targets build only the program and the simulator, not the tests,
# fuzzers and benchmarks that `make test` needs.
run: configure
	@cmake --build $(BUILD) -j $(JOBS) --target varda-toolbox varda-sim
	@tools/run-with-sim $(BUILD) $(BUILD)/src/varda-toolbox

run-glider: configure
	@cmake --build $(BUILD) -j $(JOBS) --target glider-station varda-sim
	@tools/run-with-sim $(BUILD) $(BUILD)/tools/glider-station/glider-station

# The Debian package $(BUILD)/varda-toolbox_<version>-1_<arch>.deb, made by
# CPack from what the build made.
package: build
	@cmake --build $(BUILD) --target package

# The whole suite, then all of it again under the sanitizers.
test: test-plain test-asan

test-plain: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# Everything built with AddressSanitizer and UBSan in its own tree, without
# the fuzz targets (they always run sanitized) and the benchmarks; the
# "build" test, which only builds the tree once more, and the format check
# (nothing to do with the build) are left out.
test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -DVARDA_SANITIZE=ON -DVARDA_BUILD_FUZZ=OFF -DVARDA_BUILD_BENCH=OFF >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	cd $(ASAN_BUILD) && $(SANITIZER_ENV) ctest --output-on-failure -j $(JOBS) -LE 'build|format'

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
