#!/usr/bin/env bash
# Installs what is missing, builds, runs every test and prints a summary.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

need_packages "what building needs" "${build_packages[@]}"
need_packages "what the tests need" "${test_packages[@]}"

cmake --preset default -DBUILD_TESTING=ON "$@"
cmake --build --preset default
ctest --preset default -j "$(nproc)" --output-on-failure
