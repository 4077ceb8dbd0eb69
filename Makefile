# Entry points for a fresh Debian 12 clone. Every target installs what is missing, configures and
# builds before it does its own work.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
CMAKE_GENERATOR ?= Ninja
ARTEFACTS = $(BUILD_DIR)/plugin/Tindle_artefacts/Release

.PHONY: all deps configure build test demo example install bench clean format check-format \
        test-sanitize test-tsan fuzz

all: build

deps:
	@./tools/install-deps.sh

$(BUILD_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD_DIR) -G "$(CMAKE_GENERATOR)" -DCMAKE_BUILD_TYPE=Release

configure: deps $(BUILD_DIR)/CMakeCache.txt

build: configure
	cmake --build $(BUILD_DIR) --parallel $(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure --parallel $(JOBS)

demo: build
	@./tools/demo.sh $(BUILD_DIR)

# Makes the example recording again from its generator (the result is committed).
example: build
	$(BUILD_DIR)/tools/tindle-make-example examples/damaged-example.flac

bench: build
	@./tools/install-deps.sh bench
	./bench/run.sh $(BUILD_DIR)

install: build
	mkdir -p $(HOME)/.vst3 $(HOME)/.lv2
	rm -rf $(HOME)/.vst3/Tindle.vst3 $(HOME)/.lv2/Tindle.lv2
	cp -r $(ARTEFACTS)/VST3/Tindle.vst3 $(HOME)/.vst3/
	cp -r $(ARTEFACTS)/LV2/Tindle.lv2 $(HOME)/.lv2/
	@echo "Installed into $(HOME)/.vst3 and $(HOME)/.lv2"

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

check-format:
	git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror

# The test suite again with AddressSanitizer and UndefinedBehaviorSanitizer on our code. JUCE's
# modules compile exactly as in the normal build, so ccache hands them over.
SANITIZE_DIR ?= build-sanitize
SANITIZER_ENVIRONMENT = \
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1:detect_stack_use_after_return=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/tests/sanitize/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

$(SANITIZE_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(SANITIZE_DIR) -G "$(CMAKE_GENERATOR)" -DCMAKE_BUILD_TYPE=Release \
		-DTINDLE_SANITIZE=address,undefined

test-sanitize: deps $(SANITIZE_DIR)/CMakeCache.txt
	cmake --build $(SANITIZE_DIR) --parallel $(JOBS)
	cd $(SANITIZE_DIR) && $(SANITIZER_ENVIRONMENT) ctest --output-on-failure --parallel $(JOBS)

# ThreadSanitizer over the tests where threads meet: automation, state loads, statistics and the
# window against running audio, in-process and through the bundles. Everything is instrumented,
# JUCE included, so this build takes a while the first time.
TSAN_DIR ?= build-tsan
$(TSAN_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(TSAN_DIR) -G "$(CMAKE_GENERATOR)" -DCMAKE_BUILD_TYPE=Release \
		-DTINDLE_SANITIZE=thread -DTINDLE_SANITIZE_JUCE=ON

test-tsan: deps $(TSAN_DIR)/CMakeCache.txt
	cmake --build $(TSAN_DIR) --parallel $(JOBS) --target shell_tests host_tests
	cd $(TSAN_DIR) && TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=$(CURDIR)/tests/sanitize/tsan.supp \
		ctest --output-on-failure -R '^(shell_tests|host_tests)$$'

# libFuzzer over the state chunk loader and the renderer's input, FUZZ_SECONDS each, starting from
# the committed seed corpora (copied, so that the checked-in ones stay as they are). Findings are
# written to $(FUZZ_DIR)/findings.
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 300
FUZZERS = fuzz_state_chunk:state fuzz_renderer_input:renderer-input

$(FUZZ_DIR)/CMakeCache.txt:
	@./tools/install-deps.sh fuzz
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -G "$(CMAKE_GENERATOR)" -DCMAKE_BUILD_TYPE=Release \
		-DTINDLE_SANITIZE=address,undefined -DTINDLE_FUZZ=ON

fuzz: deps $(FUZZ_DIR)/CMakeCache.txt
	@./tools/install-deps.sh fuzz
	cmake --build $(FUZZ_DIR) --parallel $(JOBS) --target fuzz_state_chunk fuzz_renderer_input
	@./tools/fuzz.sh $(FUZZ_DIR) $(FUZZ_SECONDS) $(FUZZERS)

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(TSAN_DIR) $(FUZZ_DIR)
