#!/usr/bin/env bash
# The sender's road on the built-in example: an installed dcf (PREFIX/bin/dcf, with its stubs in
# PREFIX/lib/dcf/stubs) packs examples/reports into a Windows self-extracting file for a
# recipient's key, and the recipient's side runs it with the i686 stub under 32-bit Wine. Then the
# same for a Linux recipient, and a plain password archive opened by dcf extract.
# Usage: scripts/demo.sh PREFIX
set -euo pipefail
prefix=$(realpath "${1:?usage: scripts/demo.sh PREFIX}")
root=$(cd "$(dirname "$0")/.." && pwd)
examples=$root/examples
dcf="$prefix/bin/dcf"
wine_run="$root/scripts/wine-run.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

say() { printf '\n== %s\n' "$*"; }
tree_of() { (cd "$1" && find . -mindepth 1 -not -name "*:ZelTag5" | sort | while read -r item; do
    if [ -d "$item" ]; then echo "  $item/"; else echo "  $item ($(stat -c %s "$item") bytes)"; fi
done); }
# The identifiers of a tag stream's 16-byte records, each with its first three groups
# little-endian, read from standard input.
identifiers() {
    local ids
    ids=$(od -An -tx1 -v | tr -d ' \n')
    [[ -z "$ids" ]] && { echo " (no tag stream)"; return; }
    while [[ -n "$ids" ]]; do
        g=${ids:0:32}; ids=${ids:32}
        printf ' %s' "${g:6:2}${g:4:2}${g:2:2}${g:0:2}-${g:10:2}${g:8:2}-${g:14:2}${g:12:2}-${g:16:4}-${g:20:12}"
    done
    echo
}

say "The installed dcf ($dcf) and its stubs"
"$dcf" --version
(cd "$prefix/lib/dcf/stubs" && find . -type f | sort | sed 's/^/  /')

say "A key pair for the recipient (dcf keygen)"
"$dcf" keygen --name "Demo Recipient" --out demo
head -c 64 demo.pubkey; echo "..."

say "The folder to send (examples/reports) and its categories (examples/categories.json)"
cp -r "$examples/reports" .
mkdir -p src && mv reports src/
tree_of src
cat "$examples/categories.json"
printf 'demo-password\n' >password

say "A self-extracting file for a Windows recipient (dcf create --sfx: the i686 stub by default)"
"$dcf" create --sfx --recipient demo.pubkey --password-file password \
    --categories "$examples/categories.json" parcel src/reports
"$dcf" info parcel.exe

say "The recipient runs it under 32-bit Wine: parcel.exe -key demo.privkey -target Z:\\...\\out-windows"
# Wine's drive Z: is the root of the file system.
"$wine_run" ./parcel.exe -key demo.privkey -target "Z:${PWD//\//\\}\\out-windows"
tree_of out-windows
diff -r -x "*:ZelTag5" src out-windows && echo "identical to the source"

say "The category identifiers in each extracted file's tag stream (under Wine: the file <name>:ZelTag5)"
(cd out-windows && find . -type f -not -name "*:ZelTag5" | sort | while read -r file; do
    printf '  %-28s' "$file"
    if [[ -f "$file:ZelTag5" ]]; then identifiers <"$file:ZelTag5"; else echo " (no tag stream)"; fi
done)

say "A self-extracting file for a Linux recipient (--stub-for linux: no .exe), run as ./parcel"
"$dcf" create --sfx --stub-for linux --recipient demo.pubkey --password-file password \
    --categories "$examples/categories.json" parcel src/reports
./parcel -key demo.privkey -target out-linux | tr -d '\r'
diff -r src out-linux && echo "identical to the source"
echo "  tag streams in the extended attribute user.ZelTag5:"
(cd out-linux && find . -type f | sort | while read -r file; do
    printf '  %-28s' "$file"
    (getfattr --only-values -n user.ZelTag5 "$file" 2>/dev/null || true) | identifiers
done)

say "A plain archive with a password only (dcf create), listed and extracted (dcf extract)"
"$dcf" create --password-file password archive src/reports
"$dcf" list archive.dcf --password-file password
"$dcf" extract archive.dcf -C out-dcf --password-file password
tree_of out-dcf
diff -r src out-dcf && echo "identical to the source"

say "A wrong password is refused (exit code 3)"
printf 'not-it\n' | "$dcf" extract archive.dcf -C out-wrong --password-stdin || echo "exit code $?"
