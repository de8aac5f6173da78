#!/usr/bin/env bash
# Plays a match between two UCI engines; scripts/play_match.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
rulesLibrary
exec node "$here/play_match/play_match.mjs" "$@"
