# Shared by the scripts of this folder: they source it first. Leaves them in the root of the project.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Installs the Debian packages named that are not there yet.
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

# Configures and builds a preset; what follows are targets, all where none is named.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

# Starts the services of Wine, in a folder of this project, until the script ends: started by a test, they would
# hold that test's output open.
start_wine() {
    export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
    mkdir -p "$WINEPREFIX"
    trap 'wineserver --kill || true' EXIT
    wineserver --persistent
    wineboot --init >build/wine.log 2>&1
}
