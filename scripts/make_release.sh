#!/usr/bin/env bash
# Makes the files of a release out of what is committed: the archive with the engine for any Linux, the Debian
# package, and their checksums.
#   scripts/make_release.sh [DIRECTORY]    where they go; build/release-files by default
# Nothing may differ from the commit, and CHANGELOG.md needs a section of this version with a date, and nothing that
# is unreleased. The engine is built anew in a temporary directory, which takes minutes. The same commit, compiler
# and C library give the same bytes.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."
top=$PWD
source scripts/common.sh
case ${1-} in
    -h | --help) usage 0 ;;
    -*) usage ;;
esac
(($# <= 1)) || usage
needBuildTools
need git git
need dpkg-shlibdeps dpkg-dev
need file file # cpack asks it which files are programs
installMissing

fail() {
    echo "make_release.sh: $*" >&2
    exit 1
}
say() { echo "make_release.sh: $*"; }

version=$(sed -n 's/.*Version = "\(.*\)".*/\1/p' src/shell/start_up.h)
[[ -z $(git status --porcelain) ]] || fail "the tree differs from its commit (see git status)"
grep -qE "^## \[$version\] - [0-9]{4}-[0-9]{2}-[0-9]{2}\$" CHANGELOG.md ||
    fail "CHANGELOG.md has no section \"## [$version] - YYYY-MM-DD\""
if sed -n '/^## \[Unreleased\]/,/^## \[[^U]/p' CHANGELOG.md | grep -q '^- '; then
    fail "CHANGELOG.md has lines below \"Unreleased\", which belong to the section of $version"
fi

output=$(cd "$caller" && realpath -m "${1:-$top/build/release-files}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Output that matters only if the command fails.
quietly() { "$@" >"$work/log" 2>&1 </dev/null || { cat "$work/log" >&2; fail "failed: $*"; }; }

# What can differ from one run to the next: compiler and flags of the caller, times, modes of files, the order of names.
unset CXX CFLAGS CXXFLAGS CPPFLAGS CMAKE_CXX_COMPILER_LAUNCHER LLVM_PROFILE_FILE
export LDFLAGS=-s # the linker's own checksum would count names that clang makes of the directory
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH LC_ALL=C TZ=UTC
umask 022
mkdir "$work/source" "$work/files"
git archive HEAD | tar -x --no-same-permissions -C "$work/source"
build=$work/source/build/engine

say "building the engine of version $version"
quietly "$work/source/scripts/build_release.sh"
grep -q '^TARVOK_PROFILE:STRING=USE$' "$build/CMakeCache.txt" || { cat "$work/log" >&2; fail "no training run"; }
grep -q '^CMAKE_CXX_COMPILER:.*/clang++$' "$build/CMakeCache.txt" || fail "clang++ with LLVM could not build it"
cp "$build/tarvok" "$work"
if readelf --dynamic "$work/tarvok" | grep NEEDED; then fail "the engine needs libraries of its system"; fi
quietly scripts/signature.sh --check --binary "$work/tarvok"

name=tarvok-$version-linux-x86_64-bmi2
mkdir "$work/$name"
cp "$work/tarvok" "$work/$name"
cp -r "$work/source/"{README.md,CHANGELOG.md,CONTRIBUTING.md,docs} "$work/$name"
[[ ! -f LICENSE ]] || cp LICENSE "$work/$name"
tar --create --directory "$work" --format=gnu --sort=name --owner=0 --group=0 --numeric-owner \
    --mtime="@$SOURCE_DATE_EPOCH" "$name" | gzip --best --no-name >"$work/files/$name.tar.gz"
quietly cpack --config "$build/CPackConfig.cmake" -B "$work/package"
cp "$work"/package/*.deb "$work/files"
(cd "$work/files" && sha256sum -- * >SHA256SUMS)

mkdir -p "$output"
cp "$work"/files/* "$output"
cat "$output/SHA256SUMS"
say "the files are in $output"
