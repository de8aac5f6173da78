# For sourcing: installs what a script needs, by Debian's package manager, and only what is missing.
# Everything is said on standard error, since standard output can belong to the engine.

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

installMissing() {
    ((${#missingPackages[@]})) || return 0
    local root=()
    ((EUID == 0)) || root=(sudo)
    if ! command -v apt-get >/dev/null || { ((EUID != 0)) && ! command -v sudo >/dev/null; }; then
        echo "Missing, and cannot be installed from here (that takes apt-get, and root or sudo)." >&2
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
