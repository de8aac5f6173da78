#!/usr/bin/env bash
# Builds with all checks on and runs the tests. Ends with ctest's summary, and with its exit status.
#   ./test.sh              every test
#   ./test.sh --quick      all but those labelled slow
#   ./test.sh --sanitize   under the address and undefined-behaviour sanitizers, then under the thread sanitizer
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

presets=(test)
selection=()
usage="usage: ./test.sh [--quick] [--sanitize]"
for argument in "$@"; do
    case $argument in
        --quick) selection=(--label-exclude slow) ;;
        --sanitize) presets=(asan tsan) ;;
        -h | --help)
            echo "$usage"
            exit
            ;;
        *)
            echo "$usage" >&2
            exit 2
            ;;
    esac
done

source scripts/common.sh
needBuildTools
need gtest/gtest.h libgtest-dev
need python3 python3
installMissing
checkCMake

scripts/check_layers.py
for preset in "${presets[@]}"; do
    cmake --preset "$preset"
    cmake --build --preset "$preset"
done
for preset in "${presets[@]}"; do
    ctest --preset "$preset" --parallel 2 "${selection[@]}"
done
