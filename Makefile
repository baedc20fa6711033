# The commands of everyday work, over CMake. PRESET chooses the build: release (default), debug, clang, asan, tsan.
# `make help` lists them: the lines with two hash signs.

PRESET ?= release
BUILD := build/$(PRESET)
TEST_FLAGS ?=
SECONDS ?= 60

# No target is a file.
.PHONY: $(shell sed -n 's/^\([a-z0-9-]*\):.*/\1/p' $(firstword $(MAKEFILE_LIST)))

all: build

install-deps: ## install the packages that building and testing need
	@tools/install-deps test

# Configures each time: what was installed since, Google Test or GTK, is found then.
build: install-deps ## build everything, or what a sanitizer's PRESET tests
	@mkdir -p build
	@cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=ON
	@cmake --build --preset $(PRESET)

# Needs none of the packages that only tests and alerts on a display need.
run: ## install a product into a sample root and print the report
	@tools/install-deps
	@mkdir -p build
	@test -f $(BUILD)/build.ninja || cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=OFF
	@cmake --build --preset $(PRESET) --target installer-host CorvaneInstall
	@tools/run-sample $(BUILD)

test: build ## build and run every test; TEST_FLAGS go to ctest
	@ctest --preset $(PRESET) $(TEST_FLAGS)

release-check: ## install every product in every language, and compare with what is expected
	@tools/install-deps
	@mkdir -p build
	@test -f $(BUILD)/build.ninja || cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=OFF
	@cmake --build --preset $(PRESET) --target installer-host CorvaneInstall
	@tools/release-check $(BUILD)

test-page: build ## look at the HTML reports in a browser
	@tools/install-deps page
	@tests/installer-host/page/drive-pages $(BUILD)

test-i386: ## the same for 32-bit Intel, in a root of its own (as root)
	@tools/test-i386 PRESET=$(PRESET) TEST_FLAGS="$(TEST_FLAGS)"

test-arm64: ## build for 64-bit ARM and test in qemu, in a root of its own (as root)
	@tools/test-arm64 $(TEST_FLAGS)

test-isa: ## test the vector routines with each set of instructions, in qemu where that can
	@tools/install-deps isa
	@mkdir -p build
	@cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=ON
	@cmake --build --preset $(PRESET) --target IPP_paths_test
	@tools/test-isa $(BUILD)

test-package: ## install the library, and use it from other projects in every way
	@tools/install-deps package
	@tools/test-package

package: ## build the Debian packages into build/package/packages
	@tools/install-deps package
	@mkdir -p build
	@tools/package

test-deb: package ## install, use, upgrade and remove them in a fresh Debian root (as root)
	@tools/test-deb

abi: ## compare the libraries' binary interface with the recorded one
	@tools/install-deps package
	@mkdir -p build
	@tools/abi

archive: ## pack the host and the plug-in for machines without our packages
	@tools/install-deps
	@mkdir -p build
	@test -f $(BUILD)/build.ninja || cmake --preset $(PRESET) -DCVBASE_BUILD_TESTS=OFF
	@cmake --build --preset $(PRESET) --target completion CorvaneInstall CvBase_platform
	@tools/archive $(BUILD)

test-fleet: archive ## roll the plug-in out to 24 folders as machines with Ansible, over ssh
	@tools/install-deps fleet
	@tests/deploy/fleet.py $(BUILD)/corvane-install.tar.gz

test-fleet-deb: package ## roll the Debian packages out to a Debian root as a machine (as root)
	@tools/install-deps fleet
	@tests/deploy/fleet.py --packages build/package/packages

check-darwin: ## compile for the Mac, and link and look at the plug-in
	@tools/check-darwin

lint: ## check what a machine can check; clang-tidy on what changed
	@tools/install-deps lint
	@tools/lint

lint-all: ## the same, and clang-tidy on every source
	@tools/install-deps lint
	@tools/lint all

attack: build ## attack the machine with a hostile plug-in, and see each protection missed
	@tests/installer-host/attack/attack.py $(BUILD)
	@tests/installer-host/attack/attack.py --prove $(BUILD)

fuzz: ## let each fuzzer look for faults for SECONDS (60); FUZZERS chooses some
	@tools/install-deps fuzz
	@mkdir -p build
	@cmake --preset fuzz
	@cmake --build --preset fuzz
	@tools/fuzz --seconds $(SECONDS) $(FUZZERS)

coverage: ## see how much of the code the tests reach; the page is build/coverage/html/index.html
	@tools/install-deps coverage
	@mkdir -p build
	@cmake --preset coverage
	@cmake --build --preset coverage
	@tools/coverage $(TEST_FLAGS)

mutants: ## plant faults and see that a test sees each; MUTANTS chooses some
	@tools/install-deps mutants
	@tools/mutants $(MUTANTS)

bench: ## measure against other libraries and print the table
	@tools/install-deps bench
	@mkdir -p build
	@cmake --preset bench
	@cmake --build --preset bench
	@tools/run-benchmarks build/bench

docs: ## write the reference to build/docs/html
	@tools/install-deps docs
	@mkdir -p build
	@doxygen docs/Doxyfile
	@echo build/docs/html/index.html

clean: ## remove everything that was built
	rm -rf build

help: ## list these commands
	@sed -n 's/^\([a-z0-9-]*\):.*## /\1\t/p' $(MAKEFILE_LIST) | awk -F '\t' '{ printf "make %-15s %s\n", $$1, $$2 }'
