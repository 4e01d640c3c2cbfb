# Set-up, build, run and test in one command each; see README.md.
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps configure build run run-glider test clean

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

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf $(BUILD)
