# Every script in this folder sources this file first. It changes to the root folder of the project.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Installs those of the given Debian packages that are missing.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Please install these packages first: ${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    echo "== Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET...]: configures the preset and builds the targets, or everything if none is given.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

# Starts the services of Wine, in a folder of this project, and stops them when the script ends. If a test started them,
# they would keep the test's output open.
start_wine() {
    export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
    mkdir -p "$WINEPREFIX"
    trap 'wineserver --kill || true' EXIT
    wineserver --persistent
    wineboot --init >build/wine.log 2>&1
}
