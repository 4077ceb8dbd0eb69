# Entry points for a fresh Debian 12 clone. Every target installs what is missing, configures and
# builds before it does its own work.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
CMAKE_GENERATOR ?= Ninja
ARTEFACTS = $(BUILD_DIR)/plugin/Tindle_artefacts/Release

.PHONY: all deps configure build test demo example install bench clean format check-format

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

clean:
	rm -rf $(BUILD_DIR)
