#!/usr/bin/env bash
# The built-in example: a generated folder packed by dcf create into a self-extracting file and
# into a plain password archive, then unpacked by the stub and by dcf extract.
# Usage: scripts/demo.sh BUILD_DIR
set -euo pipefail
build=${1:?usage: scripts/demo.sh BUILD_DIR}
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

say "A folder to send"
mkdir -p src/reports/2021 src/reports/2022 src/reports/drafts
for quarter in 1 2 3 4; do
    seq -f "2021 Q$quarter line %g: revenue, costs, margin" 1 2000 >"src/reports/2021/q$quarter.txt"
done
printf 'Summary of 2022\n' >src/reports/2022/summary.txt
head -c 100000 /dev/urandom >src/reports/2022/scan.bin
printf 'Grüße aus Zürich\n' >"src/reports/2022/Grüße.txt"
: >src/reports/2022/empty.txt
cat >categories.json <<'JSON'
{
  "reports/2021/q4.txt": [{"id": "5d6e7f80-1a2b-4c3d-9e8f-0a1b2c3d4e5f", "name": "Finance",
                           "priority": 2, "hasPriority": true}],
  "reports/2022/scan.bin": [{"id": "0f1e2d3c-4b5a-4968-8776-a5b4c3d2e1f0", "name": "Personal"}]
}
JSON
tree_of src
printf 'demo-password\n' >password

say "A self-extracting file for the recipient, also openable with the password (dcf create --sfx)"
"$dcf" create --sfx --stub "$stub" --recipient demo.pubkey --password-file password \
    --categories categories.json parcel src/reports
"$dcf" info parcel.exe

say "The recipient runs it with the private key (parcel.exe -key demo.privkey -target out-sfx)"
./parcel.exe -key demo.privkey -target out-sfx | tr -d '\r'
tree_of out-sfx
diff -r src out-sfx && echo "identical to the source"

say "A plain archive with a password only (dcf create), listed and extracted (dcf extract)"
"$dcf" create --password-file password archive src/reports
"$dcf" list archive.dcf --password-file password
"$dcf" extract archive.dcf -C out-dcf --password-file password
tree_of out-dcf
diff -r src out-dcf && echo "identical to the source"

say "A wrong password is refused (exit code 3)"
printf 'not-it\n' | "$dcf" extract archive.dcf -C out-wrong --password-stdin || echo "exit code $?"
