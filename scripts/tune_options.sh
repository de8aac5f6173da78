#!/usr/bin/env bash
# Tunes numeric options of an engine by games against itself; scripts/tune_options.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
rulesLibrary
exec node "$here/tune_options/tune_options.mjs" "$@"
