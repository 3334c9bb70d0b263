#!/usr/bin/env bash
# Sets up, builds and runs every test: native, sanitizers, fuzzing, the Windows builds under Wine
# in both widths, then what ships: the stubs and the Debian package.
# Exits non-zero on any failure.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
jobs=$(nproc)

# Each step tells how long the one before it took, for the CI budget.
step() {
    [[ -n ${step_name:-} ]] && printf '=== %s: %d s ===\n' "$step_name" $((SECONDS - step_start))
    step_name=$*
    step_start=$SECONDS
    printf '\n=== %s ===\n' "$*"
}

step "setup"
scripts/setup.sh

step "native build and tests"
scripts/build.sh native
ctest --test-dir build --output-on-failure -j "$jobs"

step "AddressSanitizer + UndefinedBehaviorSanitizer"
scripts/build.sh asan
ctest --test-dir build-asan --output-on-failure -j "$jobs"

step "ThreadSanitizer (concurrency tests)"
tsan_tests=(locks_tests paths_tests crypto_random_tests archive_stream_tests)
scripts/build.sh tsan "${tsan_tests[@]}"
ctest --test-dir build-tsan --output-on-failure -j "$jobs" -R "^($(IFS='|'; echo "${tsan_tests[*]}"))\$"

step "libFuzzer smoke run (20 s per target over its seeds and the inputs of past findings)"
fuzz_targets=(fuzz_category_block fuzz_key_file fuzz_archive_read)
scripts/build.sh fuzz "${fuzz_targets[@]}" fuzz_seed_corpus
fuzz_work=build-fuzz/corpus
rm -rf "$fuzz_work"
build-fuzz/tests/fuzz/fuzz_seed_corpus "$fuzz_work/seeds"
for target in "${fuzz_targets[@]}"; do
    # New inputs go to the first folder; a crash, leak, UBSan report or hang fails the step.
    mkdir -p "$fuzz_work/grown/$target"
    corpora=("$fuzz_work/grown/$target" "$fuzz_work/seeds/$target")
    [[ -d "tests/fuzz/corpus/$target" ]] && corpora+=("tests/fuzz/corpus/$target")
    "build-fuzz/tests/fuzz/$target" -max_total_time=20 -max_len=16384 -timeout=25 \
        -artifact_prefix="$fuzz_work/$target-" "${corpora[@]}"
done

# The dialog tests need a display; each Windows suite runs in the Wine prefix of its width.
step "Windows x86_64 build and tests under 64-bit Wine"
scripts/build.sh win64
xvfb-run -a ctest --test-dir build-win64 --output-on-failure -j "$jobs"
tests/e2e/stub-end-to-end.sh build/tools/dcf/dcf build-win64/frontend/Vomdrel.exe scripts/wine-run.sh

step "Windows i686 build and tests under 32-bit Wine"
scripts/build.sh win32
xvfb-run -a ctest --test-dir build-win32 --output-on-failure -j "$jobs"

step "release: the shipped stubs, their size budget and reproducibility, the Debian package"
scripts/build.sh release
ctest --test-dir build-release --output-on-failure
tests/e2e/reproducible-stub.sh build-release
rm -f build-release/dcf_*.deb
(cd build-release && cpack -G DEB >/dev/null)
tests/e2e/installed-package.sh build-release/dcf_*_amd64.deb

step "all tests passed"
