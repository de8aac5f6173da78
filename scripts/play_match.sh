#!/usr/bin/env bash
# Plays a match between two UCI engines; scripts/play_match.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
need node nodejs
need npm npm
installMissing
if [[ ! -d $here/play_match/node_modules/chessops ]]; then
    echo "play_match.sh: fetching the rules library chessops" >&2
    npm --prefix "$here/play_match" ci --no-audit --no-fund --loglevel=error >&2
fi
exec node "$here/play_match/play_match.mjs" "$@"
