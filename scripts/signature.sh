#!/usr/bin/env bash
# The engine's signature: the nodes of the last depth of its bench, on one thread in a fresh process. It changes
# when, and only when, a search changes, and it is the same for every compiler and preset.
#   scripts/signature.sh [--check] [--binary FILE] [DEPTH]
# Prints depth, nodes and speed. --check compares with the line "DEPTH NODES" of tests/data/signature.txt. The
# default depth is 12, the default binary the release build, which is brought up to date first.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

depth=12 check=false binary=
while (($#)); do
    case $1 in
        --check) check=true ;;
        --binary)
            binary=$(cd "$caller" && realpath "${2:?--binary needs a file}")
            shift
            ;;
        -h | --help) usage 0 ;;
        *[!0-9]* | '') usage ;;
        *) depth=$1 ;;
    esac
    shift
done

if [[ -z $binary ]]; then
    releaseEngine
    binary=build/release/tarvok
fi

output=$("$binary" bench 1 "$depth" 1)
# A row is "<depth> <dots> <nodes> nds <seconds> sec": nodes of that depth, seconds since the first depth began.
read -r last nodes speed < <(awk '
    match($0, /[0-9]+ nds +[0-9.]+ sec/) {
        split(substr($0, RSTART, RLENGTH), field, " ")
        depth = $1; nodes = field[1]; all += nodes; seconds = field[3]
    }
    END { printf("%d %s %.0f\n", depth, nodes ? nodes : 0, (seconds > 0) ? all / seconds : 0) }' <<<"$output")
if [[ $last != "$depth" || $nodes == 0 ]]; then
    echo "signature.sh: the bench printed no nodes for depth $depth" >&2
    exit 1
fi
echo "depth $depth nodes $nodes nps $speed"

if $check; then
    expected=$(awk -v depth="$depth" '$1 == depth { print $2 }' tests/data/signature.txt)
    if [[ $nodes != "$expected" ]]; then
        echo "signature.sh: tests/data/signature.txt has ${expected:-no number} for depth $depth" >&2
        exit 1
    fi
fi
