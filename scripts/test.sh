#!/usr/bin/env bash
# Sets up, builds and runs every test: native, sanitizers, then the Windows build under Wine.
# Exits non-zero on any failure.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
jobs=$(nproc)

step() { printf '\n=== %s ===\n' "$*"; }

step "setup"
scripts/setup.sh

step "native build and tests"
scripts/build.sh native
ctest --test-dir build --output-on-failure -j "$jobs"

step "AddressSanitizer + UndefinedBehaviorSanitizer"
scripts/build.sh asan
ctest --test-dir build-asan --output-on-failure -j "$jobs"

step "ThreadSanitizer (concurrency tests)"
tsan_tests=$(grep -ho 'dcf_test([a-z_]*' tests/Common/Common/CMakeLists.txt | sed 's/dcf_test(//' |
             grep -E '^locks' || true)
if [[ -n "$tsan_tests" ]]; then
    scripts/build.sh tsan $tsan_tests
    ctest --test-dir build-tsan --output-on-failure -R "^($(echo $tsan_tests | tr ' ' '|'))\$"
fi

step "Windows x86_64 build and tests under Wine"
scripts/build.sh win64
ctest --test-dir build-win64 --output-on-failure

step "Windows i686 build (compile and link)"
scripts/build.sh win32

step "all tests passed"
