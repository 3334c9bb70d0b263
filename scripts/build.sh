#!/usr/bin/env bash
# Configures (once) and builds one tree. Usage: scripts/build.sh TREE [targets...]
#   native   build/          the native build with the tests (RelWithDebInfo)
#   asan     build-asan/     AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan     build-tsan/     ThreadSanitizer
#   win64    build-win64/    MinGW-w64 x86_64, tests run under 64-bit Wine
#   win32    build-win32/    MinGW-w64 i686, tests run under 32-bit Wine
#   fuzz     build-fuzz/     clang, the libFuzzer targets with AddressSanitizer + UBSan
#   release  build-release/  what ships: Release dcf, the three stubs, manual pages; no tests
# Each tree keeps its own cache, so switching trees never rebuilds another. Only the release tree
# builds the stubs that dcf ships (each in a tree of its own below it).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
tree=${1:?usage: scripts/build.sh native|asan|tsan|win64|win32|fuzz|release [targets...]}
shift

# Paths under the tree are hashed relative to it, so a clone at another path (CI's) hits the cache.
export CCACHE_BASEDIR="$root"
export CCACHE_MAXSIZE=${CCACHE_MAXSIZE:-25G}
export CCACHE_NOHASHDIR=1

tests=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DDCF_STUBS=OFF)
wine=-DCMAKE_CROSSCOMPILING_EMULATOR="$root/scripts/wine-run.sh"
case "$tree" in
    native)  dir=build;         args=("${tests[@]}") ;;
    asan)    dir=build-asan;    args=("${tests[@]}" -DDCF_SANITIZE=address,undefined) ;;
    tsan)    dir=build-tsan;    args=("${tests[@]}" -DDCF_SANITIZE=thread) ;;
    win64)   dir=build-win64;   args=("${tests[@]}" "$wine"
                                      -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-x86_64.cmake") ;;
    win32)   dir=build-win32;   args=("${tests[@]}" "$wine"
                                      -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-i686.cmake") ;;
    fuzz)    dir=build-fuzz;    args=("${tests[@]}" -DCMAKE_CXX_COMPILER=clang++
                                      -DDCF_BUILD_FUZZ=ON -DDCF_BUILD_TESTS=OFF) ;;
    release) dir=build-release; args=(-DCMAKE_BUILD_TYPE=Release -DDCF_BUILD_TESTS=OFF) ;;
    *) echo "unknown tree: $tree" >&2; exit 2 ;;
esac

# A tree is configured when its cache holds each project option above (a tree made before an
# option was added gets it now). CMake's own settings are kept in other forms (a compiler's full
# path) and never change for a tree.
configured() {
    local cache="$root/$dir/CMakeCache.txt" setting name
    [[ -f "$root/$dir/build.ninja" && -f "$cache" ]] || return 1
    for setting in "${args[@]}"; do
        [[ $setting == -DDCF_* ]] || continue
        name=${setting#-D}
        name=${name%%=*}
        [[ "$(sed -n "s/^$name:[A-Z]*=//p" "$cache")" == "${setting#*=}" ]] || return 1
    done
}

if ! configured; then
    cmake -S "$root" -B "$root/$dir" -G Ninja "${args[@]}" >/dev/null
fi
ninja -C "$root/$dir" "$@"
