# The front door: every target installs what is missing, builds, and does its work.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: build demo test sanitize bench lint packages clean

packages:
	@tools/install-packages.sh

build: packages
	@mkdir -p $(BUILD)
	@cmake -S . -B $(BUILD) $(CMAKE_ARGS) >$(BUILD)/configure.log 2>&1 || { cat $(BUILD)/configure.log; exit 1; }
	@MAKEFLAGS=--no-print-directory cmake --build $(BUILD) -j $(JOBS)

# A conference of three on this machine, with or without a display.
demo: build
	@tools/demo.sh $(BUILD)

test: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The whole suite again, under address and undefined, then under thread sanitizer.
sanitize:
	@$(MAKE) test BUILD=build/asan CMAKE_ARGS=-DQD_SANITIZE=address,undefined
	@$(MAKE) test BUILD=build/tsan CMAKE_ARGS=-DQD_SANITIZE=thread

# Figures, with the budgets beside them.
BENCHES = bench_control_loop bench_display bench_membership bench_video
bench: build
	@MAKEFLAGS=--no-print-directory cmake --build $(BUILD) -j $(JOBS) --target $(BENCHES)
	@for bench in $(BENCHES); do echo "== $$bench"; $(BUILD)/$$bench || exit 1; done

lint: build
	@tools/lint.sh $(BUILD)

clean:
	@rm -rf build
