# shellcheck shell=bash
# For sourcing: what the scripts share. All of it speaks on standard error, since standard output can belong to the
# engine.

# usage [STATUS]: prints the comment on top of the script that runs and ends it, with status 2 for a wrong command
# line. With status 0, for --help, the comment is what was asked for and goes to standard output.
usage() {
    local status=${1:-2} text
    text=$(sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$(dirname "${BASH_SOURCE[0]}")/$(basename "$0")")
    if ((status)); then echo "$text" >&2; else echo "$text"; fi
    exit "$status"
}

# ---- Packages: installs what a script needs, by Debian's package manager, and only what is missing ----

# need WHAT PACKAGE...: WHAT is a command, or a header when it ends in ".h"; the packages bring it. Collects what
# is missing for installMissing.
missingPackages=()
need() {
    local what=$1
    shift
    if [[ $what == *.h ]]; then
        # Without a compiler every header looks missing: then its package is asked for too, which does no harm.
        echo "#include <$what>" | g++ -x c++ -E - >/dev/null 2>&1 && return
    else
        command -v "$what" >/dev/null && return
    fi
    missingPackages+=("$@")
}

# Why nothing can be installed, or nothing. TARVOK_NO_INSTALL is set in the environment by make.
installObstacle() {
    if [[ -n ${TARVOK_NO_INSTALL-} ]]; then
        echo "is not installed without being asked for"
    elif ! command -v apt-get >/dev/null || { ((EUID != 0)) && ! command -v sudo >/dev/null; }; then
        echo "cannot be installed from here (that takes apt-get, and root or sudo)"
    fi
}

installMissing() {
    ((${#missingPackages[@]})) || return 0
    local root=() obstacle
    ((EUID == 0)) || root=(sudo)
    obstacle=$(installObstacle)
    if [[ -n $obstacle ]]; then
        echo "$(basename "$0"): something that is needed is missing, and $obstacle." >&2
        echo "Please install the equivalent of these Debian packages: ${missingPackages[*]}" >&2
        return 1
    fi
    echo "Installing: ${missingPackages[*]}" >&2
    # A list of packages that is old or empty is renewed first; if that fails the install may work all the same.
    "${root[@]}" apt-get update -qq >&2 || true
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missingPackages[@]}" >&2 || {
        echo "apt-get could not install: ${missingPackages[*]}" >&2
        return 1
    }
    missingPackages=()
}

needBuildTools() {
    need g++ g++
    need cmake cmake
    need ninja ninja-build
}

# For behind installMissing: says so where CMake is too old, since one that does not know presets says something else.
checkCMake() {
    local least version
    least=$(sed -n 's/^cmake_minimum_required(VERSION \(.*\))$/\1/p' "$(dirname "${BASH_SOURCE[0]}")/../CMakeLists.txt")
    version=$(cmake --version | sed -n '1s/[^0-9]*//p')
    printf '%s\n' "$least" "$version" | sort --check=quiet --version-sort && return
    echo "$(basename "$0"): CMake $least or later is needed, and this is CMake $version." >&2
    return 1
}

# Node.js and the rules library of the scripts that run in it.
rulesLibrary() {
    local scripts
    scripts=$(dirname "${BASH_SOURCE[0]}")
    need node nodejs
    need npm npm
    installMissing
    [[ ! -d $scripts/node_modules/chessops ]] || return 0
    echo "$(basename "$0"): fetching the rules library chessops" >&2
    npm --prefix "$scripts" ci --no-audit --no-fund --loglevel=error >&2
}

# ---- The engine ----

# Brings build/release/tarvok, the release engine without a training run, up to date. From the top of the work tree.
releaseEngine() {
    needBuildTools
    installMissing
    checkCMake
    [[ -f build/release/build.ninja ]] || cmake --preset release >&2
    cmake --build --preset release --target tarvok >&2
}

# plays COMMAND...: the engine that the command starts answers `uci`, plays a move and leaves with status 0.
plays() {
    local line known='' move=''
    coproc engine { "$@" 2>/dev/null; }
    # shellcheck disable=SC2154 # coproc sets it
    local pid=$engine_PID input=${engine[1]} output=${engine[0]}
    trap '' PIPE # one that has ended already is told below
    printf 'uci\nposition startpos moves e2e4\ngo depth 6\n' 2>/dev/null >&"$input" || true
    trap - PIPE
    while IFS= read -r -t 60 -u "$output" line; do
        [[ $line != uciok ]] || known=yes
        [[ $line == "bestmove "* ]] && move=${line#bestmove } && break
    done
    if [[ ! $known || ! $move =~ ^[a-h][1-8][a-h][1-8] ]]; then
        echo "$* gave no move" >&2
        return 1
    fi
    echo quit >&"$input"
    wait "$pid" || { echo "$* ended with status $?" >&2 && return 1; }
    echo "   $* plays ${move%% *}"
}
