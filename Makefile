# The two set-up commands: `make run` and `make test`. Everything builds into build/.
BUILD_DIR  ?= build
BUILD_TYPE ?= Debug
SANITIZE   ?= ON
JOBS       ?= 2
DEVICE     ?= run/device
# What a simulated device is made from; a device made from older files is made again.
SIM_STAMP   = $(shell cat sim/init-device sim/standin sim/seed.txt sim/restart-device | sha256sum | cut -c1-16)

.PHONY: run test build configure deps clean

run: build
	@if [ "$$(cat $(DEVICE)/var/lib/sim/made-from 2>/dev/null)" != "$(SIM_STAMP)" ]; then \
	  [ ! -d $(DEVICE)/var/lib/pardb ] || echo "panelkit: the simulator has changed; making $(DEVICE) again"; \
	  PANELKIT_BUILD_DIR=$(BUILD_DIR) sim/init-device $(DEVICE) --force; fi
	@sim/install-plugin $(DEVICE)/mnt/apps example $(BUILD_DIR)/plugins/example/example-panelkit-plugin.so plugins/example
	@echo "panelkit: http://127.0.0.1:8080/ (simulated device in $(DEVICE); stop with Ctrl-C)"
	MOUNT_DIR=$(CURDIR)/$(DEVICE)/mnt/apps APPLICATION_DIR=$(CURDIR)/$(DEVICE)/opt/application \
	  $(BUILD_DIR)/panelkit -c config/sim.json

test: build
	cd $(BUILD_DIR) && ctest --no-tests=error --output-on-failure -j$(JOBS)

build: configure
	cmake --build $(BUILD_DIR) -j$(JOBS)

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DPANELKIT_SANITIZE=$(SANITIZE)

deps:
	scripts/install-deps
	@[ node_modules/.package-lock.json -nt package-lock.json ] || npm ci --no-audit --no-fund

clean:
	rm -rf $(BUILD_DIR)
