#!/usr/bin/env bash
# Whole-process times of merro beside other programs on the same tape in the same run: the median of 5, after one run that
# warms the page cache.
#   bench/compare.sh [FOLDER]   the tape and what is written go there (default: a new folder under ${TMPDIR:-/tmp}; ~6 GB)
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages "what building needs" "${build_packages[@]}"
need_packages "what is measured against" hyperfine ffmpeg dvgrab jq time

cmake --preset release >/dev/null
cmake --build --preset release --target merro
merro=$PWD/build-release/bin/merro

if [ $# -gt 0 ]; then
    folder=$1
    mkdir -p "$folder"
else
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
fi
tape=$folder/tape.dv
[ -f "$tape" ] || "$merro" tape make bench/long-tape.json "$tape"
defaults=$folder/defaults.json
results=$folder/results.json

compare() {
    local title=$1 clean=$2
    shift 2
    echo "== $title"
    hyperfine --shell bash --warmup 1 --runs 5 --prepare "$clean" --export-json "$results" "$@" >/dev/null 2>&1 ||
        { echo "error: one of the programs failed: $*" >&2; exit 1; }
    jq -r '.results[] | "\(.median * 1000 | round | tostring | ("      " + .)[-6:]) ms  \(.command)"' "$results" |
        sed "s|$folder/||g; s|$merro|merro|g"
}

out=$folder/out
log="$merro log $tape --into $out --defaults-file $defaults --progress never"
du -h "$tape"
compare "reading the tape" "rm -rf $out" \
    "cat $tape > /dev/null" \
    "$log --movies off --sample-every off --posters off"
compare "cutting with thumbnails and posters" "rm -rf $out" \
    "dvgrab -stdin -autosplit=2 -noavc -format raw - < $tape > /dev/null" \
    "$log --movies off"
compare "movies" "rm -rf $out $folder/copy.mov" \
    "ffmpeg -v error -nostdin -i $tape -c copy $folder/copy.mov" \
    "$log"
rm -rf "$out"
echo "== memory of a run with movies"
# shellcheck disable=SC2086 # the words of the command are meant to split
command time -f '%M kB at the most (mapped pages of the tape included)' $log >/dev/null
rm -rf "$out" "$folder/copy.mov"
