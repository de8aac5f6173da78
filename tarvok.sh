#!/usr/bin/env bash
# Builds the engine if it has changed and starts it; arguments go to it. For a chess GUI this is the command to
# enter. Standard output belongs to the engine alone, so everything else here speaks on standard error.
set -euo pipefail
# The engine keeps the caller's directory, to which its file options are relative.
here=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")" && pwd)

source "$here/scripts/common.sh"
needBuildTools
installMissing

build() (
    cd "$here"
    mkdir -p build
    # A tournament manager starts several engines at once; the build directory takes one build at a time.
    if command -v flock >/dev/null; then
        exec 9>build/lock
        flock 9
    fi
    scripts/build_release.sh
)
# Standard input belongs to the engine too: a build step that read from it would eat commands. The build is quiet
# unless it fails, but for its three steps, which take minutes when a source has changed.
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! build </dev/null 2>&1 | tee "$log" | sed -un 's/^build_release.sh: /tarvok.sh: building, /p' >&2; then
    cat "$log" >&2
    exit 1
fi
rm -f "$log"
trap - EXIT
exec "$here/build/engine/tarvok" "$@"
