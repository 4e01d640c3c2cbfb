# Set-up, build, run and test in one command each; see README.md.
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps configure build run test clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/src/varda-toolbox

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf $(BUILD)
