#!/usr/bin/env bash
# Builds the i686 Windows stub a second time, from a clean copy of the sources at another path and
# without ccache, and compares it byte for byte with the one of a release tree: a sender can then
# check the program a recipient will run.
# Usage: reproducible-stub.sh RELEASE_TREE   (a tree of scripts/build.sh release, built)
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
built=$(realpath "${1:?usage: reproducible-stub.sh RELEASE_TREE}")/tools/dcf/stubs/windows/Vomdrel.exe
[[ -f $built ]] || { echo "FAILED: no stub at $built" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
copy=$work/elsewhere/sources
mkdir -p "$copy"
(cd "$root" && git ls-files -z --cached --others --exclude-standard |
    tar --null --no-recursion -T - -cf -) | tar -xf - -C "$copy"

export CCACHE_DISABLE=1
cmake -S "$copy" -B "$copy/build-release" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DDCF_BUILD_TESTS=OFF >/dev/null
ninja -C "$copy/build-release" stub_windows >/dev/null
again=$copy/build-release/tools/dcf/stubs/windows/Vomdrel.exe
if ! cmp "$built" "$again"; then
    echo "FAILED: two builds of the i686 stub differ (see cmp above)" >&2
    exit 1
fi
echo "reproducible: the i686 stub built again elsewhere is the same $(stat -c %s "$built") bytes," \
     "SHA-256 $(sha256sum "$built" | cut -d' ' -f1)"
