# The front door: everything is one word here; CMake and its presets do the work.

BUILD := build
JOBS := $(shell nproc)
FUZZ_SECONDS ?= 60
MINUTES ?= 30
SEED := $(or $(SEED),$(shell date +%s))

all: $(BUILD)/build.ninja
	cmake --build $(BUILD)

$(BUILD)/build.ninja: CMakePresets.json
	scripts/install-deps build
	cmake --preset release

demo: all
	scripts/demo $(BUILD)/vek

test: all
	scripts/install-deps test
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The static programs, and the cases of the tool against both of them.
musl:
	scripts/install-deps build cross
	cmake --preset musl && cmake --build $(BUILD)/musl
	cmake --preset aarch64-musl && cmake --build $(BUILD)/aarch64-musl

test-cross: all musl
	VEK_TEST_BINARY="$(CURDIR)/$(BUILD)/musl/vek" \
	  ctest --test-dir $(BUILD) -L tool --output-on-failure -j $(JOBS)
	VEK_TEST_BINARY="$(CURDIR)/$(BUILD)/aarch64-musl/vek" VEK_TEST_RUNNER=/usr/bin/qemu-aarch64-static \
	  ctest --test-dir $(BUILD) -L tool --output-on-failure -j $(JOBS)

bench: all musl
	scripts/install-deps bench
	cmake --build $(BUILD) --target empty peak
	cmake --build $(BUILD)/musl --target empty
	bench/run $(BUILD)

fuzz:
	scripts/install-deps build fuzz
	cmake --preset fuzz && cmake --build $(BUILD)/fuzz --target vek_fuzz decode_fuzz recording_fuzz
	tests/fuzz/run $(BUILD)/fuzz/recording_fuzz $$(($(FUZZ_SECONDS) / 10)) recording_corpus
	tests/fuzz/run $(BUILD)/fuzz/decode_fuzz $$(($(FUZZ_SECONDS) / 4)) decode_corpus
	tests/fuzz/run $(BUILD)/fuzz/vek_fuzz $$(($(FUZZ_SECONDS) * 2 / 3)) corpus

# One kind of cases alone with KIND=calls; a fault again with its SEED, KIND and CASE.
torture: all
	scripts/install-deps test torture
	tests/torture/torture $(BUILD) $(MINUTES) $(SEED) $(KIND) $(CASE)

lint: all
	scripts/install-deps lint
	scripts/lint $(BUILD)

install: all
	scripts/install $(BUILD)

uninstall:
	scripts/uninstall $(BUILD)

deb:
	scripts/install-deps build deb
	scripts/make-deb $(BUILD)/deb

# In a fresh root, which takes some minutes and root.
test-deb: deb
	scripts/test-deb $(BUILD)/deb

# TOOLCHAIN=router.cmake PLATFORM_LIBS="...;..." add the tool for a vendor's own libraries.
router-package: all
	scripts/install-deps build cross
	cmake --preset aarch64-musl && cmake --build $(BUILD)/aarch64-musl --target vek
	scripts/router-package $(BUILD) "$(TOOLCHAIN)" "$(PLATFORM_LIBS)"

clean:
	rm -rf $(BUILD)

.PHONY: all demo test musl test-cross bench fuzz torture lint install uninstall deb test-deb router-package clean
