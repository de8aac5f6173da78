#!/usr/bin/env bash
# Builds, installs and packages the engine as others will, in a temporary directory, and checks what comes out:
# `make EXE=name`, `make install`, the manual page, the Debian package, and the source package.
#   scripts/check_package.sh [--install]
# --install also puts the package into this system with dpkg, runs it and removes it (needs root). BUILD in the
# environment names the build directory, build/engine by default.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

install=false
case ${1-} in
    '') ;;
    --install) install=true ;;
    -h | --help) usage 0 ;;
    *) usage ;;
esac
needBuildTools
need make make
need groff groff-base
need dpkg-shlibdeps dpkg-dev
need dpkg-deb dpkg
need file file # cpack asks it which files are programs
need lintian lintian
installMissing

build=$(realpath -m "${BUILD:-build/engine}")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "check_package.sh: $*" >&2
    exit 1
}
# Output that matters only if the command fails.
quietly() { "$@" >"$scratch/log" 2>&1 </dev/null || { cat "$scratch/log" >&2; fail "failed: $*"; }; }

# The files below a directory, one a line, without directories.
filesOf() { (cd "$1" && find . -type f | sed 's/^\.//' | sort); }
# The files of an installation: binary directory, prefix, and others that are to be there.
expectedFiles() {
    {
        printf '%s\n' "$1/tarvok" "$2/share/man/man6/tarvok.6.gz" "${@:3}"
        printf "$2/share/doc/tarvok/%s\n" README.md CHANGELOG.md CONTRIBUTING.md docs/*.md docs/examples/*
    } | sort
}

echo "== make without a compiler"
# All programs of this system but the compiler, and stand-ins for two that make must not call.
programs=$scratch/programs
mkdir "$programs"
IFS=: read -ra folders <<<"$PATH"
for folder in "${folders[@]}"; do
    find -L "$folder" -maxdepth 1 -type f -executable ! -name '*[gc]++*' ! -name apt-get ! -name sudo \
        -exec ln -s -t "$programs" {} + 2>/dev/null || true # the first of a name counts
done
printf '#!/bin/sh\necho called: a program that installs\n' | tee "$programs/apt-get" >"$programs/sudo"
chmod +x "$programs/apt-get" "$programs/sudo"
for arguments in EXE=never "EXE=never BUILD=$scratch/none" test install; do
    read -ra words <<<"$arguments"
    said=$(PATH=$programs make "${words[@]}" 2>&1) && fail "make ${words[*]} does without a compiler"
    [[ $said == *"Debian packages: g++"* ]] || fail "make ${words[*]} does not name g++: $said"
    [[ $said != *called:* ]] || fail "make ${words[*]} would install: $said"
done

echo "== make EXE=name (minutes, unless $build is up to date)"
mkdir "$scratch/built" "$scratch/moved"
quietly make BUILD="$build" EXE="$scratch/built/engine-1"
mv "$scratch/built/engine-1" "$scratch/moved/other name"
plays "$scratch/moved/other name"
summary=$("$scratch/moved/other name" bench | tail -n 1)
echo "   bench: $summary"
expected=$(awk '$1 == 12 { print $2 }' tests/data/signature.txt)
[[ $summary =~ ^([0-9]+)\ nodes\ ([0-9]+)\ nps$ ]] || fail "the bench ends with \"$summary\""
((BASH_REMATCH[1] == expected && BASH_REMATCH[2] > 0)) || fail "the bench should end with $expected nodes"

echo "== make install"
DESTDIR="$scratch/image" quietly make BUILD="$build" PREFIX=/usr/local install
diff <(expectedFiles /usr/local/bin /usr/local) <(filesOf "$scratch/image") || fail "other files than expected"
plays "$scratch/image/usr/local/bin/tarvok"
# Then it runs on any Linux.
if readelf --dynamic "$scratch/image/usr/local/bin/tarvok" | grep NEEDED; then fail "it needs libraries"; fi
# An old processor is played by an emulator.
if command -v qemu-x86_64 >/dev/null; then
    said=$(qemu-x86_64 -cpu Nehalem "$scratch/image/usr/local/bin/tarvok" bench 1 5 1 2>&1) &&
        fail "it runs without BMI2"
    [[ $said == "Tarvok needs BMI2, "* ]] || fail "it does not say that it needs BMI2: $said"
else
    echo "   an old processor: skipped, qemu-x86_64 (package qemu-user) is missing"
fi

echo "== manual page"
page=$scratch/image/usr/local/share/man/man6/tarvok.6.gz
gunzip --stdout "$page" | groff -t -mandoc -ww -rLL=78n -Tutf8 >"$scratch/page" 2>"$scratch/warnings"
if [[ -s $scratch/warnings ]]; then
    cat "$scratch/warnings" >&2
    fail "the manual page has faults"
fi
grep -q "Tarvok $(sed -n 's/.*Version = "\(.*\)".*/\1/p' src/shell/start_up.h)" docs/tarvok.6 ||
    fail "the manual page has another version"
echo "   $(wc -l <"$scratch/page") lines"

echo "== package"
quietly cpack --config "$build/CPackConfig.cmake" -B "$scratch/package"
package=$(echo "$scratch"/package/*.deb)
for field in Package Version Architecture Section Maintainer; do
    value=$(dpkg-deb --field "$package" "$field")
    [[ -n $value ]] || fail "the package has no field $field"
    echo "   $field: $value"
done
dpkg-deb --extract "$package" "$scratch/unpacked"
debians=(/usr/share/doc/tarvok/{copyright,changelog.gz} /usr/share/lintian/overrides/tarvok)
diff <(expectedFiles /usr/games /usr "${debians[@]}") <(filesOf "$scratch/unpacked") || fail "other files than expected"
plays "$scratch/unpacked/usr/games/tarvok"
quietly lintian --fail-on error "$package"
grep '^[EW]:' "$scratch/log" || true

echo "== source package"
quietly cpack --config "$build/CPackSourceConfig.cmake" -B "$scratch/source"
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    tar --list --file "$scratch"/source/*.tar.gz | sed 's,^[^/]*/,,' | grep -v '/$' | sort >"$scratch/packed"
    git ls-files --cached --others --exclude-standard | sort | diff - "$scratch/packed" ||
        fail "the source package is not what git lists"
fi

if $install; then
    echo "== dpkg"
    ((EUID == 0)) || fail "--install needs root"
    ! dpkg-query --show tarvok >/dev/null 2>&1 || fail "a package tarvok is already installed"
    quietly dpkg --install "$package"
    trap 'dpkg --purge tarvok >&2; rm -rf "$scratch"' EXIT
    plays /usr/games/tarvok
    quietly dpkg --purge tarvok
    trap 'rm -rf "$scratch"' EXIT
    [[ ! -e /usr/games/tarvok && ! -e /usr/share/doc/tarvok ]] || fail "files are left behind"
fi
echo "All checks passed."
