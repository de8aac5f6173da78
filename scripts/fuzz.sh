#!/usr/bin/env bash
# Fuzzes the engine with libFuzzer under the address and undefined-behaviour sanitizers.
#   scripts/fuzz.sh [--build FOLDER] [TARGET] [MINUTES]
# TARGET is uci, fen, table, book or all (the default), one after the other; MINUTES is the time of each, 30 by
# default. Says how far it is once in half a minute. What it learns stays in build/fuzz/learnt for the next run. It ends
# at the first input that fails, keeps it there as found-*, and says how to look at it.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

targets=(uci fen table book)
build=build/fuzz
if [[ ${1-} == --build ]]; then
    build=$(cd "$caller" && realpath -m "${2:?--build needs a folder}")
    shift 2
fi
case ${1:-all} in
    all) ;;
    uci | fen | table | book) targets=("$1") ;;
    -h | --help) usage 0 ;;
    *) usage ;;
esac
minutes=${2:-30}
[[ $minutes =~ ^[1-9][0-9]*$ && $# -le 2 ]] || usage

needBuildTools
need gtest/gtest.h libgtest-dev
need clang++ clang
installMissing

cmake --preset fuzz -B "$build"
cmake --build "$build" --target "${targets[@]/%/_fuzz}"
build=$(realpath "$build")

# Longest input in bytes: table files are what needs the most.
lengthOf() {
    case $1 in
        uci) echo 1500 ;;
        fen) echo 200 ;;
        table) echo 17000 ;;
        book) echo 1000 ;;
    esac
}

# The last line with the fuzzer's numbers: inputs run, coverage, inputs kept, speed.
report() {
    local name=$1 seconds=$2 line
    line=$(grep -a '^#[0-9]' "$3" | tail -n 1 | sed -E 's/ (lim|L|MS|rss): .*(exec)/ \2/; s/ (rss|L|MS): .*//') ||
        line="nothing run yet"
    printf '%s: %d:%02d of %d minutes  %s\n' "$name" $((seconds / 60)) $((seconds % 60)) "$minutes" "$line"
}

# The limit on one input is long, since a busy machine may keep the fuzzer waiting.
inputSeconds=300

running=
trap '[[ -z $running ]] || kill "$running" 2>/dev/null' EXIT

fuzz() {
    local name=$1 program=$build/$1_fuzz learnt=$build/learnt/$1 dictionary=()
    mkdir -p "$learnt/corpus" "$learnt/tmp"
    [[ $name != table ]] || "$program" --seeds="$learnt/corpus"
    [[ ! -f tests/fuzz/${name}_fuzz.dict ]] || dictionary=(-dict="tests/fuzz/${name}_fuzz.dict")
    TMPDIR=$learnt/tmp "$program" -max_total_time=$((minutes * 60)) -max_len="$(lengthOf "$name")" \
        -timeout="$inputSeconds" -report_slow_units="$inputSeconds" -rss_limit_mb=2048 \
        -close_fd_mask=3 -artifact_prefix="$learnt/found-" "${dictionary[@]}" \
        "$learnt/corpus" "tests/fuzz/corpus/${name}_fuzz" >"$learnt/log" 2>&1 &
    running=$!
    echo "$name: $minutes minutes, log in $learnt/log"
    local start=$SECONDS last=$SECONDS status=0
    while kill -0 "$running" 2>/dev/null; do
        sleep 1
        ((SECONDS - last < 30)) && continue
        last=$SECONDS
        report "$name" $((SECONDS - start)) "$learnt/log"
    done
    wait "$running" || status=$?
    running=
    report "$name" $((SECONDS - start)) "$learnt/log"
    rm -rf "$learnt/tmp"
    ((status)) || return 0
    local found
    found=$(grep -ao "$learnt/found-[^ ]*" "$learnt/log" | tail -n 1 || true)
    echo "$name: FAILED" >&2
    tail -n 60 "$learnt/log" >&2
    if [[ -n $found ]]; then
        echo "Run it again:  $program $found" >&2
        echo "Make it small: $program -minimize_crash=1 -runs=10000 -exact_artifact_path=SMALL $found" >&2
        echo "When it is mended, keep it in tests/fuzz/corpus/${name}_fuzz under a name that tells what it was." >&2
    fi
    return 1
}

for name in "${targets[@]}"; do fuzz "$name"; done
echo "Nothing found."
