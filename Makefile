# The two commands a newcomer needs: `make run` and `make test`.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

.PHONY: all deps configure build run test clean

all: build

deps:
	@scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	$(BUILD_DIR)/quillstash

test: build
	@BUILD_DIR=$(abspath $(BUILD_DIR)) scripts/run-tests.sh; status=$$?; scripts/test-ratio.sh; exit $$status

clean:
	rm -rf $(BUILD_DIR)
