#!/usr/bin/env bash
# The built-in example: what the stub and the archive tool do today, on generated files.
# Usage: scripts/demo.sh BUILD_DIR
set -euo pipefail
build=${1:?usage: scripts/demo.sh BUILD_DIR}
stub="$build/frontend/Vomdrel"
dcf="$build/tools/dcf/dcf"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

say() { printf '\n== %s\n' "$*"; }

say "The stub's help text (Vomdrel -h)"
"$stub" -h | tr -d '\r'

say "A key pair for the recipient (dcf keygen)"
"$dcf" keygen --name "Demo Recipient" --out "$work/demo"
ls -l "$work"/demo.*
head -c 64 "$work/demo.pubkey"; echo "..."

say "A self-extracting file: the stub, an image, and the 1024-byte trailer behind them"
image="$work/image.bin"
head -c 4096 /dev/urandom >"$image"
size=$(stat -c %s "$image")
{
    cat "$stub" "$image"
    printf 'SFXCRYPTOR\001\000'
    for shift in 0 8 16 24 32 40 48 56; do
        printf "\\$(printf '%03o' $(((size >> shift) & 255)))"
    done
    head -c 990 /dev/zero
    printf '\005\000\000\000'
    head -c 10 /dev/zero
} >"$work/demo.exe"
echo "stub $(stat -c %s "$stub") bytes + image $size bytes + trailer 1024 bytes = $(stat -c %s "$work/demo.exe") bytes"
tail -c 1024 "$work/demo.exe" | head -c 20 | od -A d -t x1

say "The stub finds the image through the trailer (the image here is random bytes, so it refuses it)"
"$stub" -key "$work/demo.privkey" -target "$work/out" -source "$work/demo.exe" | tr -d '\r'
