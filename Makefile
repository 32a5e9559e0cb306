# The two commands a newcomer needs: `make run` and `make test`.
# `make install` installs the program (PREFIX=/usr to install there, DESTDIR
# to stage it); `make package` builds the Debian package and checks it.
BUILD_DIR ?= build
PACKAGE_BUILD_DIR ?= build-package
JOBS ?= $(shell nproc)
PREFIX ?=

.PHONY: all deps configure build run test install package package-check clean

all: build

deps:
	@scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(if $(PREFIX),-DCMAKE_INSTALL_PREFIX=$(PREFIX)) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

# Only the program and what it links, not the tests and benchmarks.
run: configure
	@cmake --build $(BUILD_DIR) --target quillstash -j $(JOBS)
	$(BUILD_DIR)/quillstash

test: build
	@BUILD_DIR=$(abspath $(BUILD_DIR)) scripts/run-tests.sh; status=$$?; scripts/test-ratio.sh; exit $$status

install: configure
	@cmake --build $(BUILD_DIR) --target quillstash quillstash_compressed_docs -j $(JOBS)
	cmake --install $(BUILD_DIR)

# A Release build for /usr with Debian's hardening flags, packed by CPack
# into $(PACKAGE_BUILD_DIR)/quillstash_<version>_amd64.deb, then validated.
package:
	@scripts/install-deps.sh package
	@BUILD_DIR=$(abspath $(PACKAGE_BUILD_DIR)) JOBS=$(JOBS) scripts/build-package.sh

# Installs the package on a fresh Debian 12 root and starts it there (root only).
package-check: package
	scripts/package-check.sh $(PACKAGE_BUILD_DIR)/quillstash_*_amd64.deb

clean:
	rm -rf $(BUILD_DIR) $(PACKAGE_BUILD_DIR)
