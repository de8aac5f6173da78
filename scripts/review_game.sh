#!/usr/bin/env bash
# Goes through games with the engine; scripts/review_game.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
rulesLibrary
[[ ${1-} == --help || ${1-} == -h ]] || (cd "$here/.." && releaseEngine)
exec node "$here/insight/review_game.mjs" "$here/../build/release/tarvok" "$@"
