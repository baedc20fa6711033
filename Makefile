# The commands of everyday work, over CMake. PRESET chooses the build: release (default), debug, asan, tsan.

PRESET ?= release
BUILD := build/$(PRESET)
TEST_FLAGS ?=

.PHONY: all build run test test-i386 bench docs clean install-deps

all: build

install-deps:
	@tools/install-deps test

# Configures each time: what was installed since, Google Test or GTK, is found then.
build: install-deps
	@mkdir -p build
	@cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=ON
	@cmake --build --preset $(PRESET)

# Needs none of the packages that only tests and alerts on a display need.
run:
	@tools/install-deps
	@mkdir -p build
	@test -f $(BUILD)/build.ninja || cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=OFF
	@cmake --build --preset $(PRESET) --target installer-host CorvaneInstall
	@tools/run-sample $(BUILD)

test: build
	@ctest --preset $(PRESET) $(TEST_FLAGS)

test-i386:
	@tools/test-i386 PRESET=$(PRESET) TEST_FLAGS="$(TEST_FLAGS)"

bench:
	@tools/install-deps bench
	@mkdir -p build
	@cmake --preset bench
	@cmake --build --preset bench
	@tools/run-benchmarks build/bench

docs:
	@tools/install-deps docs
	@mkdir -p build
	@doxygen docs/Doxyfile
	@echo build/docs/html/index.html

clean:
	rm -rf build
