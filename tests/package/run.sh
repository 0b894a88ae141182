#!/usr/bin/env bash
# Checks what users get: an installed copy, packages, or a part of their own project. Builds programs with each and
# runs them. What is installed and packed are the libraries of the presets.
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

need binutils cmake dpkg-dev file g++ g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix libxcb1-dev ninja-build pkgconf \
    unzip wine wine64
work=$PWD/build/package
rm -rf "$work"
mkdir -p "$work"
warnings="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Werror"

fail() {
    echo "Packages: $*" >&2
    exit 1
}

# Runs a command silently unless it fails.
quietly() {
    "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "failed: $*"; }
}

# Builds the user's project and runs its programs: use NAME ARGUMENT... (for cmake)
use() {
    quietly cmake -S tests/package -B "$work/$1" -G Ninja -Werror=dev "${@:2}"
    quietly cmake --build "$work/$1"
    [ "$1" = mingw32 ] || # whose programs nothing here could run
        quietly ctest --test-dir "$work/$1" --output-on-failure --no-tests=error
}

# Builds and runs its programs by pkg-config: use_pkg_config NAME LIBDIR
use_pkg_config() {
    local program=$work/$1-pkg-config
    local compile="g++ -std=c++20 $warnings -Wsign-conversion tests/package/main.cpp"
    export PKG_CONFIG_LIBDIR=$2/pkgconfig
    quietly $compile $(pkg-config --cflags --libs ZelUtil) -o "$program-shared"
    quietly $compile $(pkg-config --static --cflags --libs ZelUtilStatic) -o "$program-static"
    [[ $(readelf -d "$program-shared") = *'[libZelUtil.so.'[0-9]* ]] || fail "$1 asks for no version of the library"
    [[ $(readelf -d "$program-static") != *libZelUtil* ]] || fail "$1 needs the shared library"
    (cd "$work" && LD_LIBRARY_PATH=$2 quietly "$program-shared" && quietly "$program-static")
}

# Packs what a preset built, into build/package/packages: pack PRESET GENERATOR ARGUMENT... (for cmake)
pack() {
    quietly cmake --preset "$1" "${@:3}"
    quietly cpack --config "build/$1/CPackConfig.cmake" -G "$2" -B "$work/packages"
}

# Checks that a Debian package depends on another: depends PACKAGE OTHER
depends() {
    [[ "$(dpkg-deb --field "$1" Depends), " = *"$2"* ]] || fail "$1 does not depend on $2"
}

echo "-- Headers, each alone"
for preset in release mingw64; do
    quietly build "$preset" ZelUtil_verify_interface_header_sets
done

echo "-- Installed"
quietly cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr/local # which decides how folders are named
quietly cmake --install build/release --prefix "$work/installed"
use find_package -DCMAKE_PREFIX_PATH="$work/installed" -DCMAKE_CXX_FLAGS="$warnings"
use_pkg_config installed "$work/installed/lib"

echo "-- Part of another project"
use add_subdirectory -DZELUTIL_SOURCE="$PWD" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="$warnings" \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
flags=$(grep -m 1 '"command".*shared.dir/main.cpp' "$work/add_subdirectory/compile_commands.json")
expected="c++ -I$PWD/include $warnings -g -std=gnu++20 -o CMakeFiles/shared.dir/main.cpp.o "
[[ $flags = *"$expected"* ]] || fail "the library adds flags: $flags"
[[ $(ctest --test-dir "$work/add_subdirectory" -N) = *'Total Tests: 2' ]] || fail "the library adds tests"
quietly cmake --install "$work/add_subdirectory" --prefix "$work/host"
[ "$(cd "$work/host" && find . -type f -o -type l)" = ./bin/shared ] || fail "the library installs itself with its host"

echo "-- Packages for Debian and others"
pack release DEB -DCMAKE_INSTALL_PREFIX=/usr # where Debian has a folder for each processor
pack release TGZ -DCMAKE_INSTALL_PREFIX=/usr/local
runtime=$(echo "$work"/packages/libzelutil[0-9]*.deb)
development=$(echo "$work"/packages/libzelutil-dev_*.deb)
dpkg -x "$runtime" "$work/root"
[ -z "$(find "$work/root" -type f -not -name 'libZelUtil.so.*')" ] || fail "$runtime has more than programs run with"
dpkg -x "$development" "$work/root"
for library in libc6 libgcc-s1 libstdc++6 libxcb1; do
    depends "$runtime" "$library"
done
depends "$development" "$(dpkg-deb --showformat='${Package} (= ${Version}), ' --show "$runtime")"
depends "$development" "libxcb1-dev, "
use deb -DCMAKE_PREFIX_PATH="$work/root/usr"
use_pkg_config deb "$work/root/usr/lib/$(dpkg-architecture --query DEB_HOST_MULTIARCH)"
mkdir "$work/unpacked"
tar -xf "$work"/packages/*.tar.gz -C "$work/unpacked" --strip-components 1
use tar -DCMAKE_PREFIX_PATH="$work/unpacked"

echo "-- Packages for Windows"
[ -n "${WINEPREFIX:-}" ] || start_wine
for processor in i686 x86_64; do
    [ $processor = i686 ] && preset=mingw32 || preset=mingw64
    pack $preset ZIP
    unzip -q "$work/packages/ZelUtil-*-Windows-$processor.zip" -d "$work/unpacked-$preset"
    unpacked=$(echo "$work/unpacked-$preset"/*)
    "$processor-w64-mingw32-objdump" -p "$unpacked"/bin/*.dll >"$work/log"
    for library in $(sed -n 's/.*DLL Name: \(lib.*\)/\1/p' "$work/log"); do
        [ -f "$unpacked/bin/$library" ] || fail "$library is not in the package for $processor"
    done
    mkdir "$work/$preset"
    cp "$unpacked"/bin/*.dll "$work/$preset"
    use $preset --toolchain "$PWD/cmake/$preset.cmake" -DZelUtil_DIR="$unpacked/lib/cmake/ZelUtil" \
        -DCMAKE_CXX_FLAGS="$warnings"
done
quietly x86_64-w64-mingw32-g++-posix -std=c++20 -static $warnings -I"$unpacked/include" tests/package/load.cpp \
    -o "$work/load.exe"
quietly wine "$work/load.exe" "$(winepath -w "$unpacked/bin/ZelUtil.dll")"
echo "packages: all checks passed"
