#!/usr/bin/env bash
# Lists what each term of the evaluation gives each side.
#   scripts/eval_terms.sh FEN          one position
#   scripts/eval_terms.sh < FILE       a FEN a line
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh
case ${1-} in
    -h | --help) usage 0 ;;
    -*) usage ;;
esac
needBuildTools
need gtest/gtest.h libgtest-dev
installMissing
{ cmake --preset test && cmake --build --preset test --target eval_terms; } </dev/null >&2
exec build/test/eval_terms "$@"
