#!/usr/bin/env bash
# Explains how the engine judges a position; scripts/explain_position.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
rulesLibrary
[[ ${1-} == --help || ${1-} == -h ]] || (cd "$here/.." && releaseEngine)
exec node "$here/insight/explain_position.mjs" "$here/../build/release/tarvok" "$@"
