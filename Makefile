# Every target installs what it needs and builds what it runs.

ARGS ?=
ENGINES ?=
SECONDS ?= 60

.PHONY: help bootstrap build run test bench sanitize fuzz torture lint check-macos format package clean

help:
	@echo "make run [ARGS=--stay]      take the module through a mail session in the reference host"
	@echo "make test [ARGS=name…]      run the tests"
	@echo "make test ENGINES='18 24'   run the portable ones on these versions of Node.js"
	@echo "make bench [ARGS=name…]     measure, beside peers"
	@echo "make sanitize [ARGS=name…]  run the tests under AddressSanitizer and UndefinedBehaviorSanitizer"
	@echo "make fuzz [ARGS=door…] [SECONDS=60]  fuzz the entrances for foreign bytes, so long each"
	@echo "make torture [ARGS=name…]   let system and library calls fail, one after the other"
	@echo "make lint | format          check | correct the sources"
	@echo "make check-macos            compile and link for macOS, without running anything"
	@echo "make package [ENGINES='…']  make the npm package and the source archive, in build/package"
	@echo "make build | clean"

bootstrap:
	@scripts/bootstrap

build: bootstrap
	@scripts/build release

run: build
	@scripts/display-session node host/main.js $(ARGS)

test: bootstrap
	@scripts/build release $(ENGINES)
ifeq ($(strip $(ENGINES)),)
	@node tests/run.js $(ARGS)
else
	@scripts/test-engines "$(ENGINES)" $(ARGS)
endif

bench: build
	@node bench/run.js $(ARGS)

sanitize: bootstrap
	@scripts/build sanitize
	@scripts/sanitized node tests/run.js $(ARGS)
ifeq ($(strip $(ARGS)),)
	@scripts/build fuzz
	@SECONDS_EACH=20 scripts/fuzz
endif

fuzz: bootstrap
	@scripts/build fuzz
	@SECONDS_EACH=$(SECONDS) scripts/fuzz $(ARGS)

torture: build
	@node torture/run.js $(ARGS)

# Form first: a slip in it is told before anything is built.
lint: bootstrap
	@scripts/lint form
	@scripts/build release
	@scripts/lint tidy
	@node checks/macos/check.js --self-test
	@node checks/macos/check.js

# Compiles, links and audits the module for macOS 11, on both architectures; nothing is run.
check-macos: bootstrap
	@node checks/macos/check.js

format: bootstrap
	@scripts/format

package: bootstrap
	@scripts/build release $(ENGINES)
	@scripts/package $(ENGINES)

clean:
	@rm -rf build
