#!/usr/bin/env bash
# The built-in example: the folder examples/reports packed by dcf create into a self-extracting file and
# into a plain password archive, then unpacked by the stub and by dcf extract.
# Usage: scripts/demo.sh BUILD_DIR
set -euo pipefail
build=$(realpath "${1:?usage: scripts/demo.sh BUILD_DIR}")
examples=$(cd "$(dirname "$0")/../examples" && pwd)
stub="$build/frontend/Vomdrel"
dcf="$build/tools/dcf/dcf"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

say() { printf '\n== %s\n' "$*"; }
tree_of() { (cd "$1" && find . -mindepth 1 | sort | while read -r item; do
    if [ -d "$item" ]; then echo "  $item/"; else echo "  $item ($(stat -c %s "$item") bytes)"; fi
done); }

say "The stub's help text (Vomdrel -h)"
"$stub" -h | tr -d '\r'

say "A key pair for the recipient (dcf keygen)"
"$dcf" keygen --name "Demo Recipient" --out demo
head -c 64 demo.pubkey; echo "..."

say "The folder to send (examples/reports) and its categories (examples/categories.json)"
cp -r "$examples/reports" .
mkdir -p src && mv reports src/
tree_of src
cat "$examples/categories.json"
printf 'demo-password\n' >password

say "A self-extracting file for the recipient, also openable with the password (dcf create --sfx)"
"$dcf" create --sfx --stub "$stub" --recipient demo.pubkey --password-file password \
    --categories "$examples/categories.json" parcel src/reports
"$dcf" info parcel.exe

say "The recipient runs it with the private key (parcel.exe -key demo.privkey -target out-sfx)"
./parcel.exe -key demo.privkey -target out-sfx | tr -d '\r'
tree_of out-sfx
diff -r src out-sfx && echo "identical to the source"

say "The category identifiers in each extracted file's tag stream (extended attribute user.ZelTag5)"
# Each record is an identifier of 16 bytes, its first three groups little-endian.
(cd out-sfx && find . -type f | sort | while read -r file; do
    ids=$( (getfattr --only-values -n user.ZelTag5 "$file" 2>/dev/null || true) | od -An -tx1 -v | tr -d ' \n')
    printf '  %-28s' "$file"
    [[ -z "$ids" ]] && { echo " (no tag stream)"; continue; }
    while [[ -n "$ids" ]]; do
        g=${ids:0:32}; ids=${ids:32}
        printf ' %s' "${g:6:2}${g:4:2}${g:2:2}${g:0:2}-${g:10:2}${g:8:2}-${g:14:2}${g:12:2}-${g:16:4}-${g:20:12}"
    done
    echo
done)

say "A plain archive with a password only (dcf create), listed and extracted (dcf extract)"
"$dcf" create --password-file password archive src/reports
"$dcf" list archive.dcf --password-file password
"$dcf" extract archive.dcf -C out-dcf --password-file password
tree_of out-dcf
diff -r src out-dcf && echo "identical to the source"

say "A wrong password is refused (exit code 3)"
printf 'not-it\n' | "$dcf" extract archive.dcf -C out-wrong --password-stdin || echo "exit code $?"
