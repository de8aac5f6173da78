#!/usr/bin/env bash
# Formats all C++ files of the work tree in place, new ones included; with --check only names those that would
# change.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

mode=(-i)
case ${1-} in
    '') ;;
    --check) mode=(--dry-run --Werror) ;;
    -h | --help) usage 0 ;;
    *) usage ;;
esac
need clang-format clang-format
installMissing

mapfile -t files < <(git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' |
    while read -r file; do [[ -f $file ]] && echo "$file"; done)
((${#files[@]})) || exit 0
clang-format "${mode[@]}" "${files[@]}"
