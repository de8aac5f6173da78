#!/usr/bin/env bash
# Tries a release where there is little: the archive's engine answers and plays in a directory with nothing else in it,
# and in bare Debian systems, which debootstrap makes.
#   scripts/check_anywhere.sh [--archive FILE] [--commands] [--systems DIRECTORY] [SUITE...]    (as root)
# A SUITE is a name that debootstrap knows; by default the oldest that Debian's mirrors still have, and the present
# one. The archive is that of build/release-files. --commands also runs ./tarvok.sh and ./test.sh there, in Debian 12
# and later, on what is committed; they install what they need and take half an hour. --systems takes the systems that
# are in DIRECTORY and leaves those made there; otherwise they are removed at the end. The exit status is 1 if anything
# failed.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

archive='' commands=false systems='' suites=()
while (($#)); do
    case $1 in
        --archive)
            archive=$(cd "$caller" && realpath "${2:?--archive needs a file}")
            shift
            ;;
        --commands) commands=true ;;
        --systems)
            systems=$(cd "$caller" && realpath -m "${2:?--systems needs a directory}")
            shift
            ;;
        -h | --help) usage 0 ;;
        -*) usage ;;
        *) suites+=("$1") ;;
    esac
    shift
done
((${#suites[@]})) || suites=(oldoldstable stable)
need debootstrap debootstrap
installMissing
((EUID == 0)) || { echo "check_anywhere.sh: needs root, for chroot" >&2 && exit 2; }
[[ $archive ]] || archive=$(compgen -G 'build/release-files/tarvok-*.tar.gz' | sort --version-sort | tail -n 1) ||
    { echo "check_anywhere.sh: no archive; scripts/make_release.sh makes one" >&2 && exit 2; }
name=$(basename "$archive" .tar.gz)

work=$(mktemp -d)
mounted=''
cleanUp() {
    [[ -z $mounted ]] || umount "$mounted"
    rm -rf --one-file-system "$work"
}
trap cleanUp EXIT
trap 'exit 1' INT TERM

# inside COMMAND...: in the system at $system, with nothing of this one's environment.
inside() { chroot "$system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/opt LC_ALL=C.UTF-8 "$@"; }
tryCommands() {
    rm -rf "$system/opt/tarvok"
    mkdir -p "$system/opt/tarvok"
    git archive HEAD | tar -x -C "$system/opt/tarvok"
    mount -t proc proc "$system/proc"
    mounted=$system/proc
    inside bash -c 'cd /opt/tarvok && ./tarvok.sh bench 1 5 1 && ./test.sh' </dev/null >"$work/log" 2>&1 ||
        { cat "$work/log" && return 1; }
    umount "$mounted"
    mounted=''
    sed -n 's/^.*tests passed.*/   &/p' "$work/log"
}

mkdir "$work/nothing"
tar -x -f "$archive" -C "$work/nothing"
echo "nothing: no file but those of the archive"
plays chroot "$work/nothing" "/$name/tarvok"

for suite in "${suites[@]}"; do
    system=${systems:-$work}/$suite
    if [[ ! -x $system/bin/sh ]]; then
        mkdir -p "$system"
        debootstrap --variant=minbase "$suite" "$system" >"$work/log" 2>&1 || { tail "$work/log" && exit 1; }
    fi
    echo "$suite: Debian $(<"$system/etc/debian_version"), $(inside ldd --version | head -n 1)"
    rm -rf "$system/opt/$name"
    tar -x -f "$archive" -C "$system/opt"
    plays inside "/opt/$name/tarvok"
    $commands || continue
    release=$(cut -d . -f 1 "$system/etc/debian_version")
    if [[ $release =~ ^[0-9]+$ ]] && ((release < 12)); then
        echo "   the commands: skipped, they need Debian 12 or later"
    else
        tryCommands
    fi
done
echo "All checks passed."
