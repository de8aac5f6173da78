#!/usr/bin/env bash
# Builds the engine that is played with, build/engine/tarvok, optimised by the counts of a training run.
#   scripts/build_release.sh [TARGET...]    brings it up to date; the default target is tarvok
# An engine that counts is built first and runs its bench, then the final one by these counts. Both are made anew
# when a source has changed. Where the compiler can't do that, the engine is a plain release build.
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

# What the counts depend on: the engine's sources, the build's description and the compiler.
fingerprint() {
    {
        find src cmake CMakeLists.txt CMakePresets.json -type f | LC_ALL=C sort | xargs sha256sum
        "${CXX:-c++}" --version
    } | sha256sum
}
release() { cmake --preset release -B "$1" -DTARVOK_BENCHMARKS=OFF -DTARVOK_PROFILE="$2" "${@:3}" >/dev/null; }
isGnu() { "${CXX:-c++}" --version | grep -q 'Free Software Foundation'; }

profiled() {
    rm -rf "$counting/profile"
    say "1 of 3: the engine that counts; all three take some minutes"
    release $counting GENERATE && cmake --build $counting --target tarvok || return
    say "2 of 3: its training run, a few seconds"
    $counting/tarvok bench 1 11 1 || return
    say "3 of 3: the engine by these counts"
    # New counts are no reason to build for the build tool, so it begins from nothing.
    release $final USE -DTARVOK_PROFILE_DIR="$PWD/$counting/profile" && cmake --build $final --target clean &&
        cmake --build $final --target tarvok
}
plain() {
    say "$1: making a plain release build"
    release $final '' && cmake --build $final --target tarvok
}

now=$(fingerprint)
if [[ $(cat $final/fingerprint 2>/dev/null) != "$now" ]]; then
    rm -f $final/fingerprint
    if isGnu; then
        profiled || plain "the profile-guided build failed"
    else
        plain "${CXX:-c++} is not g++, whose counts this build reads"
    fi
    echo "$now" >$final/fingerprint
fi
cmake --build $final --target "${targets[@]}"
