# A plain front for CMake, for those who expect `make`, and for engine-testing frameworks.
#   make [EXE=name] [CXX=compiler]   a release engine of that name here, whose bench ends in "N nodes N nps"
#   make bench                       builds it and runs its bench
#   make test                        every test, as ./test.sh
#   make install [PREFIX=/usr/local] [DESTDIR=]
#   make clean                       removes what `make` built

# It installs nothing that it needs, but says what is missing.
export TARVOK_NO_INSTALL := yes

EXE ?= tarvok
PREFIX ?= /usr/local
JOBS ?= $(shell nproc)

# A compiler that is named gets a build directory of its own, since CMake cannot change it in one that exists.
ifeq ($(origin CXX),default)
BUILD ?= $(if $(shell command -v ninja),build/engine,build/release)
else
BUILD ?= build/release-$(subst $(eval) ,-,$(notdir $(CXX)))
export CXX
endif

GENERATOR := $(if $(shell command -v ninja),Ninja,Unix Makefiles)

# How a release target is built in $(BUILD): by the counts of a training run where ninja is at hand.
ifeq ($(abspath $(BUILD)),$(abspath build/engine))
build_release = scripts/build_release.sh
else
build_release = bash -c '. scripts/common.sh; need cmake cmake; c=$${CXX:-c++}; \
	case $$c in *clang*) package=clang ;; *) package=g++ ;; esac; \
	need "$${c%% *}" $$package; installMissing && checkCMake' make && \
	cmake --preset release -B '$(BUILD)' -G '$(GENERATOR)' && \
	cmake --build '$(BUILD)' --parallel $(JOBS) --target
endif

.PHONY: all bench test install clean

all:
	$(build_release) tarvok_framework
	install -m 755 -T '$(BUILD)/tarvok_framework' '$(EXE)'

bench: all
	'$(abspath $(EXE))' bench

test:
	./test.sh

install:
	$(build_release) tarvok
	cmake --install '$(BUILD)' --prefix '$(PREFIX)'

clean:
	if [ -f '$(BUILD)/CMakeCache.txt' ]; then cmake --build '$(BUILD)' --target clean; fi
	rm -f '$(EXE)'
