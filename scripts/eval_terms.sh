#!/usr/bin/env bash
# Lists what each stage of the evaluation gives each side, and each step from there to the score.
#   scripts/eval_terms.sh [--json] FEN          one position
#   scripts/eval_terms.sh [--json] < FILE       a FEN a line
# With --json each position is one line of JSON: pairs are [middlegame, endgame].
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh
case ${1-} in
    -h | --help) usage 0 ;;
    --json | [!-]* | "") ;;
    *) usage ;;
esac
needBuildTools
need gtest/gtest.h libgtest-dev
installMissing
{ cmake --preset test && cmake --build --preset test --target eval_terms; } </dev/null >&2
exec build/test/eval_terms "$@"
