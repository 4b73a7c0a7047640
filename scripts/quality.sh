#!/usr/bin/env bash
# What a change has to pass beside its tests: format, static analysis, sanitizers, headers that compile alone, and an
# outside project that uses the installed package.
#   scripts/quality.sh [format|tidy|headers|consumer|core|asan|tsan …]   all of them without a name
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "what building needs" "${build_packages[@]}"
need_packages "what the tests need" "${test_packages[@]}"
need_packages "what the checks need" "${quality_packages[@]}"

sources() { git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h'; }

check_format() {
    echo "== format"
    sources | xargs clang-format-14 --dry-run --Werror
}

check_tidy() {
    echo "== tidy"
    [ -f build/compile_commands.json ] || cmake --preset default >/dev/null
    sources | grep '\.cpp$' | grep -v -e '^tests/' -e '^bench/' |
        xargs -P "$(nproc)" -n 4 clang-tidy-14 --quiet -p build 2>/dev/null
}

check_headers() {
    echo "== headers alone"
    cmake --preset default -B build-headers -DMERRO_CHECK_HEADERS=ON -DMERRO_WERROR=ON -DBUILD_TESTING=ON \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O0" >/dev/null
    cmake --build build-headers --target merro_headers
}

check_consumer() {
    echo "== an outside project"
    local prefix
    prefix=$(pwd)/build/installed
    rm -rf "$prefix" build/consumer
    cmake --build --preset default
    cmake --install build --prefix "$prefix" >/dev/null
    cmake -S tests/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build build/consumer
    build/consumer/consumer
}

check_core() {
    echo "== the core alone, with no package but the compiler"
    cmake --preset default -B build-core -DMERRO_FFMPEG=OFF -DMERRO_HOST=OFF -DMERRO_BENCH=OFF -DMERRO_WERROR=ON \
        -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1" >/dev/null
    cmake --build build-core
    ctest --test-dir build-core -j "$(nproc)" --output-on-failure
}

check_sanitizer() {
    echo "== $1"
    cmake --preset "$1" -DMERRO_WERROR=ON >/dev/null
    cmake --build --preset "$1"
    ctest --preset "$1" -j "$(nproc)" --output-on-failure
}

for check in "${@:-format tidy headers consumer core asan tsan}"; do
    for one in $check; do
        case $one in
            format | tidy | headers | consumer | core) "check_$one" ;;
            asan | tsan) check_sanitizer "$one" ;;
            *) echo "error: no check named $one; see the head of $0" >&2; exit 2 ;;
        esac
    done
done
