#!/usr/bin/env bash
# Compares how many nodes UCI engines search in a second; scripts/compare_speed.sh --help lists the settings.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"
need node nodejs
installMissing
exec node "$here/compare_speed/compare_speed.mjs" "$@"
