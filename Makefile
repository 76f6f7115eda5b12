# The front door: every target installs what is missing, builds, and does its work.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: build programs configured demo test sanitize fuzz bench soak lint install package screenshots packages clean

packages:
	@tools/install-packages.sh

build: configured
	@MAKEFLAGS=--no-print-directory cmake --build $(BUILD) -j $(JOBS)

# Without the tests.
programs: configured
	@MAKEFLAGS=--no-print-directory cmake --build $(BUILD) -j $(JOBS) --target installable

configured: packages
	@mkdir -p $(BUILD)
	@cmake -S . -B $(BUILD) $(CMAKE_ARGS) >$(BUILD)/configure.log 2>&1 || { cat $(BUILD)/configure.log; exit 1; }

# A conference of three on this machine, with or without a display.
demo: build
	@tools/demo.sh $(BUILD)

test: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The whole suite again, under address and undefined, then under thread sanitizer.
sanitize:
	@$(MAKE) test BUILD=build/asan CMAKE_ARGS=-DQD_SANITIZE=address,undefined
	@$(MAKE) test BUILD=build/tsan CMAKE_ARGS=-DQD_SANITIZE=thread

# Looks for inputs that break what others can reach, each fuzzer for FUZZ_SECONDS.
FUZZ_SECONDS ?= 60
fuzz: packages
	@tools/fuzz-codecs.sh build/fuzz/codecs $(JOBS)
	@PKG_CONFIG_PATH=$(CURDIR)/build/fuzz/codecs/lib/pkgconfig \
	    $(MAKE) --no-print-directory configured BUILD=build/fuzz \
	    CMAKE_ARGS='-DCMAKE_CXX_COMPILER=clang++-14 -DQD_SANITIZE=fuzzer-no-link,address,undefined'
	@MAKEFLAGS=--no-print-directory cmake --build build/fuzz -j $(JOBS) --target fuzzers
	@tools/fuzz.sh build/fuzz $(FUZZ_SECONDS)

# Figures, with the budgets beside them.
BENCHES = bench_parts bench_sound_path bench_display bench_control_loop bench_start bench_delay \
          bench_membership bench_video bench_impairment bench_hostile bench_scale
bench: build
	@tools/bench-clips.sh $(BUILD)/bench-clips
	@MAKEFLAGS=--no-print-directory cmake --build $(BUILD) -j $(JOBS) --target $(BENCHES)
	@tools/bench.sh $(BUILD) $(BENCHES)

# Whether what the programs hold grows over MINUTES of everything that people do with them.
MINUTES ?= 10
soak: configured
	@MAKEFLAGS=--no-print-directory cmake --build $(BUILD) -j $(JOBS) --target soak
	@$(BUILD)/soak $(MINUTES) 12 disturbed

# Beneath PREFIX; with DESTDIR, as if PREFIX were in there.
PREFIX ?= /usr/local
install: programs
	@DESTDIR='$(DESTDIR)' cmake --install $(BUILD) --prefix '$(PREFIX)'

# build/package/quendal_VERSION_ARCHITECTURE.deb, of programs built as Debian builds its own.
DEBIAN_FLAGS = $(shell dpkg-buildflags --get CPPFLAGS) $(shell dpkg-buildflags --get CXXFLAGS)
package: packages
	@$(MAKE) --no-print-directory programs BUILD=build/package CMAKE_ARGS='$(CMAKE_ARGS) \
	    -DCMAKE_CXX_FLAGS="$(DEBIAN_FLAGS)" -DCMAKE_CXX_FLAGS_RELWITHDEBINFO= \
	    -DCMAKE_EXE_LINKER_FLAGS="$(shell dpkg-buildflags --get LDFLAGS) -Wl,-z,now"'
	@cd build/package && cpack --config CPackConfig.cmake -B . >cpack.log 2>&1 || { cat cpack.log; exit 1; }
	@rm -rf build/package/_CPack_Packages && ls build/package/*.deb

# The pictures of the README and the guide, of every window there is.
screenshots: programs
	@tools/screenshots.sh $(BUILD) docs/images

lint: build
	@tools/lint.sh $(BUILD)

clean:
	@rm -rf build
