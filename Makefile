# The two commands a newcomer runs: `make run` and `make test`.
# Both first make sure the Debian packages are there (installing them when run
# as root, else printing the one apt-get line to run).

BUILD      ?= build
GENERATOR  := -G Ninja
WERROR     := $(if $(CI),ON,OFF)
CMAKE_ARGS ?=
PACKAGES   := g++ cmake ninja-build pkg-config qt6-base-dev libavformat-dev libavutil-dev \
              libavcodec-dev libgtest-dev libgmock-dev libbenchmark-dev ffmpeg dpkg-dev file
FUZZ_SECONDS ?= 60

.PHONY: all deps configure build run test test-asan test-tsan bench fuzz clean format install package

all: build

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = 0 ]; then \
	    echo "Installing:$$missing"; \
	    apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $$missing; \
	  else \
	    echo "Missing packages. Run:"; \
	    echo "  sudo apt-get install -y --no-install-recommends$$missing"; \
	    exit 1; \
	  fi; \
	fi

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) $(GENERATOR) -DTARN_WERROR=$(WERROR) $(CMAKE_ARGS)

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD)

# The desktop app where a display exists, else the headless report of the
# bundled demo volume.
run: build
	@if [ -x $(BUILD)/src/tarn-app ] && [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then \
	  $(BUILD)/src/tarn-app --demo; \
	else \
	  $(BUILD)/src/tarn demo; \
	fi

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j2

# tarn, tarn-app, the desktop entry and the icon under PREFIX (default /usr/local).
PREFIX ?= /usr/local
install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

# The Debian package $(BUILD)/tarn_<version>-<build>_<arch>.deb (dependencies from dpkg-shlibdeps).
package: build
	cmake --build $(BUILD) --target package

test-asan:
	$(MAKE) test BUILD=build-asan CMAKE_ARGS="-DTARN_SANITIZE=ON -DTARN_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug"

# ThreadSanitizer over every suite: the log's delivery thread, the scan's
# thread pool, the action worker, the app and the fuzz replays.
test-tsan:
	$(MAKE) build BUILD=build-tsan CMAKE_ARGS="-DTARN_SANITIZE=thread -DTARN_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug"
	TSAN_OPTIONS="halt_on_error=1 suppressions=$(CURDIR)/tests/tsan.supp" ctest --test-dir build-tsan --output-on-failure -j2

bench: build
	@for b in $(BUILD)/bench/bench_*; do [ -x "$$b" ] && echo "== $$b" && "$$b"; done; true

# Each libFuzzer target for $(FUZZ_SECONDS) s from a corpus written by the fixture
# writers; whatever crashes or hangs is kept under fuzz/regressions/<target>/,
# which `make test` replays.
fuzz: deps
	CXX=clang++ cmake -S . -B build-fuzz $(GENERATOR) -DTARN_FUZZ=ON -DTARN_BUILD_TESTS=OFF \
	  -DTARN_BUILD_BENCH=OFF -DTARN_BUILD_APP=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build build-fuzz
	build-fuzz/fuzz/seed_corpus fuzz-corpus
	@status=0; for f in build-fuzz/fuzz/fuzz_*; do \
	  [ -f "$$f" ] && [ -x "$$f" ] || continue; \
	  name=$$(basename $$f); mkdir -p fuzz-corpus/$$name fuzz/regressions/$$name; \
	  echo "== $$name"; \
	  $$f -max_total_time=$(FUZZ_SECONDS) -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
	    -artifact_prefix=fuzz/regressions/$$name/ fuzz-corpus/$$name || status=1; \
	done; exit $$status

format:
	find src tests bench fuzz -name '*.cpp' -o -name '*.h' | xargs clang-format -i

clean:
	rm -rf build build-asan build-tsan build-fuzz
