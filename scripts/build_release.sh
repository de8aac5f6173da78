#!/usr/bin/env bash
# Builds the engine that is played with, build/engine/tarvok, optimised by the counts of a training run.
#   scripts/build_release.sh [TARGET...]    brings it up to date; the default target is tarvok
# An engine that counts is built first and runs its bench, then the final one by these counts. Both are made anew
# when a source has changed. The compiler is clang++, whose engine is some 4 % faster than that of g++, where it is
# complete or can be installed, else g++; CXX=COMPILER decides otherwise. Where the compiler can't do that, the engine
# is a plain release build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh
case ${1-} in
    -h | --help) usage 0 ;;
    -*) usage ;;
esac
needBuildTools
installMissing
checkCMake

say() { echo "build_release.sh: $*"; }
targets=("${@:-tarvok}")
counting=build/counting final=build/engine

hasClang() { command -v clang++ && command -v llvm-ar && command -v llvm-profdata; } >/dev/null
# The compilers to try, one after the other.
chooseCompilers() {
    if [[ -n ${CXX-} ]]; then
        compilers=("$CXX")
    elif hasClang; then
        compilers=(clang++ c++)
    else
        compilers=(c++)
    fi
}
# Fails where the library that counts is missing.
counts() { echo 'int main() {}' | $1 -x c++ -fprofile-generate -o /dev/null - 2>/dev/null; }

# What the counts depend on: the engine's sources, the build's description and the compiler.
fingerprint() {
    {
        find src cmake CMakeLists.txt CMakePresets.json scripts/build_release.sh -type f | LC_ALL=C sort |
            xargs sha256sum
        "${compilers[0]}" --version
    } | sha256sum
}

release() { cmake --preset release -B "$1" -DTARVOK_BENCHMARKS=OFF -DTARVOK_PROFILE="$2" "${@:3}" >/dev/null; }

# Both directories are begun anew, since CMake keeps the compiler of one that exists, and new counts are no reason to
# build for the build tool.
profiled() {
    counts "$CXX" || return
    rm -rf $counting $final
    say "1 of 3: the engine that counts; all three take some minutes"
    release $counting GENERATE && cmake --build $counting --target tarvok || return
    say "2 of 3: its training run, a few seconds"
    $counting/tarvok bench 1 11 1 || return
    if compgen -G "$counting/profile/*.profraw" >/dev/null; then # clang's counts
        llvm-profdata merge -o $counting/profile/default.profdata $counting/profile/*.profraw || return
    fi
    say "3 of 3: the engine by these counts"
    release $final USE -DTARVOK_PROFILE_DIR="$PWD/$counting/profile" && cmake --build $final --target tarvok
}

# With the first compiler that can do it.
profiledBySome() {
    for CXX in "${compilers[@]}"; do
        export CXX
        profiled && return
        say "no profile-guided build by $CXX"
    done
    return 1
}

plain() {
    say "making a plain release build"
    rm -rf $final
    release $final '' && cmake --build $final --target tarvok
}

chooseCompilers
if [[ $(cat $final/fingerprint 2>/dev/null) != "$(fingerprint)" ]]; then
    # Only now, since this is run at every start of the engine and an installation that fails takes its time.
    if [[ -z ${CXX-} && ! $(installObstacle) ]] && ! { hasClang && counts clang++; }; then
        missingPackages=(clang llvm libclang-rt-dev)
        installMissing || true
        chooseCompilers
    fi
    now=$(fingerprint)
    profiledBySome || plain
    echo "$now" >$final/fingerprint
fi
cmake --build $final --target "${targets[@]}"
