#!/usr/bin/env bash
# Configures (once) and builds one tree. Usage: scripts/build.sh TREE [targets...]
#   native   build/        the native build (RelWithDebInfo)
#   asan     build-asan/   AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan     build-tsan/   ThreadSanitizer
#   win64    build-win64/  MinGW-w64 x86_64, tests run under Wine
#   win32    build-win32/  MinGW-w64 i686, compile and link only
#   fuzz     build-fuzz/   clang, the libFuzzer targets with AddressSanitizer + UBSan
# Each tree keeps its own cache, so switching trees never rebuilds another.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
tree=${1:?usage: scripts/build.sh native|asan|tsan|win64|win32|fuzz [targets...]}
shift

# Paths under the tree are hashed relative to it, so a clone at another path (CI's) hits the cache.
export CCACHE_BASEDIR="$root"
export CCACHE_MAXSIZE=${CCACHE_MAXSIZE:-25G}
export CCACHE_NOHASHDIR=1

case "$tree" in
    native) dir=build;       args=() ;;
    asan)   dir=build-asan;  args=(-DDCF_SANITIZE=address,undefined) ;;
    tsan)   dir=build-tsan;  args=(-DDCF_SANITIZE=thread) ;;
    win64)  dir=build-win64; args=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-x86_64.cmake"
                                   -DCMAKE_CROSSCOMPILING_EMULATOR="$root/scripts/wine-run.sh") ;;
    win32)  dir=build-win32; args=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-i686.cmake") ;;
    fuzz)   dir=build-fuzz;  args=(-DCMAKE_CXX_COMPILER=clang++ -DDCF_BUILD_FUZZ=ON
                                   -DDCF_BUILD_TESTS=OFF) ;;
    *) echo "unknown tree: $tree" >&2; exit 2 ;;
esac

if [[ ! -f "$root/$dir/build.ninja" ]]; then
    cmake -S "$root" -B "$root/$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${args[@]}" >/dev/null
fi
ninja -C "$root/$dir" "$@"
