#!/usr/bin/env bash
# Makes a large set of openings, varied and balanced positions, for long matches and for tuning.
#   scripts/make_openings.sh [--chess960]
# 4,000 positions go to build/openings/standard.epd, or chess960.epd. The release build judges them, brought up to date
# first; as long as its signature is the same the file is too.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
case ${1-} in
    '') variant=standard ;;
    --chess960) variant=chess960 ;;
    -h | --help) usage 0 ;;
    *) usage ;;
esac

rulesLibrary
cd "$here/.."
releaseEngine
mkdir -p build/openings
file=build/openings/$variant.epd
echo "make_openings.sh: making $file" >&2
node scripts/play_match/make_openings.mjs build/release/tarvok 4000 1 --depth 12 "$@" >"$file.new"
mv "$file.new" "$file"
