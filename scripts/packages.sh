# shellcheck shell=bash disable=SC2034
# Sourced by the other scripts: makes sure that Debian packages are there.
#   need_packages WHY PACKAGE…

build_packages=(g++ cmake ninja-build pkg-config
    libavformat-dev libavcodec-dev libavutil-dev libavfilter-dev libswscale-dev libswresample-dev
    libsoci-dev libsqlite3-dev libcli11-dev libfmt-dev nlohmann-json3-dev tzdata)
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev ffmpeg mediainfo dvgrab sqlite3 jq python3)
quality_packages=(clang-format-14 clang-tidy-14 clang-tools-14 clang-14 libclang-rt-14-dev)

need_packages() {
    local why=$1
    shift
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local sudo=()
    if ! command -v apt-get >/dev/null || ! grep -qs '^VERSION_ID="12"' /etc/os-release; then
        echo "error: this is not Debian 12; please install by hand what these packages hold ($why): ${missing[*]}" >&2
        exit 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "error: neither root nor sudo here; ask an administrator to run: apt-get install ${missing[*]}" >&2
            exit 1
        fi
        sudo=(sudo)
    fi
    echo "Installing $why: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${sudo[@]}" apt-get update -qq &&
        "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1; then
        tail -n 5 "$log" >&2
        echo "error: apt-get could not install ${missing[*]}; the whole output is in $log" >&2
        exit 1
    fi
    rm -f "$log"
}
