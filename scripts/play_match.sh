#!/usr/bin/env bash
# Plays a match between two UCI engines; scripts/play_match.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/packages.sh"
need node nodejs
need npm npm
installMissing
[[ -d $here/play_match/node_modules/chessops ]] || npm --prefix "$here/play_match" ci --silent >&2
exec node "$here/play_match/play_match.mjs" "$@"
