#!/usr/bin/env bash
# Installs what is missing, builds merro, makes a demonstration tape and logs it.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

need_packages "what building needs" "${build_packages[@]}"

echo "Building merro …"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { [ -f build/build.ninja ] || cmake --preset default -DBUILD_TESTING=OFF; } >"$log" 2>&1 ||
    ! cmake --build --preset default --target merro >>"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "error: the build failed; the lines above say where" >&2
    exit 1
fi

mkdir -p demo
tape=demo/tape.dv
[ -f "$tape" ] || build/bin/merro tape make resources/demonstration.json "$tape"

run=1
while [ -e "demo/run-$run" ]; do run=$((run + 1)); done
echo "Logging $tape into demo/run-$run"
build/bin/merro log "$tape" --into "demo/run-$run"
echo "The program is build/bin/merro; build/bin/merro --help tells what else it does."
