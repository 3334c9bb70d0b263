#!/usr/bin/env bash
# A self-extracting archive made by `dcf create --sfx` with the given stub, extracted by running
# the stub on its command line path, checked file by file with each file's tag stream.
# Usage: stub-end-to-end.sh DCF STUB|PLATFORM [RUNNER]
#   STUB is a stub file given to --stub; PLATFORM (windows, windows-x64, linux) lets dcf take the
#   stub it ships, and must find it: with no option at all for windows, the default.
#   RUNNER runs the stub (scripts/wine-run.sh for a Windows stub); empty runs it directly.
set -euo pipefail
usage="usage: stub-end-to-end.sh DCF STUB|PLATFORM [RUNNER]"
dcf=$(realpath "${1:?$usage}")
stub=${2:?$usage}
runner=()
[[ -n "${3:-}" ]] && runner=("$(realpath "$3")")
case "$stub" in
    windows)     stub_option=(); suffix=.exe ;;
    windows-x64) stub_option=(--stub-for windows-x64); suffix=.exe ;;
    linux)       stub_option=(--stub-for linux); suffix="" ;;
    *)           stub=$(realpath "$stub"); stub_option=(--stub "$stub")
                 suffix=""; [[ "$stub" == *.exe ]] && suffix=.exe ;;
esac

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# A failure shows what the stub said, if anything.
fail() {
    echo "FAILED: $*" >&2
    [[ -s stub.out ]] && sed 's/^/  stub: /' stub.out >&2
    exit 1
}

# The sender's tree: nested folders, an empty folder, an empty file, a name beyond ASCII, and a
# file of several pieces.
mkdir -p data/reports/2021 data/reports/none data/reports/notes
printf 'quarterly figures\n' >data/reports/2021/a.txt
: >data/reports/2021/empty.bin
printf 'remarques\n' >"data/reports/notes/résumé.txt"
head -c 300000 /dev/urandom >data/reports/notes/blob.bin
finance=01234567-89ab-cdef-0123-456789abcdef
legal=fedcba98-7654-3210-fedc-ba9876543210
cat >categories.json <<JSON
{"reports/2021/a.txt": [{"id": "$finance", "name": "Finance"}, {"id": "$legal", "name": "Legal"}],
 "reports/notes/résumé.txt": [{"id": "$legal", "name": "Legal"}]}
JSON
printf 'correct horse\n' >password

"$dcf" keygen --name "End to end" --out key >/dev/null
"$dcf" create archive data/reports --sfx "${stub_option[@]}" --recipient key.pubkey \
    --password-file password --categories categories.json --quiet
archive=archive$suffix
[[ -f $archive ]] || fail "dcf create made no $archive: $(ls)"
if [[ ${#stub_option[@]} -gt 0 && ${stub_option[0]} == --stub ]]; then
    cp "$stub" "stub$suffix"
else
    # The shipped stub, as dcf info tells it, is what stands in front of the image.
    info=$("$dcf" info --json "$archive")
    [[ $info == *"\"shippedStub\": \"$stub\""* ]] || fail "not the shipped $stub stub: $info"
    offset=$(sed -n 's/.*"imageOffset": \([0-9]*\).*/\1/p' <<<"$info")
    head -c "$offset" "$archive" >"stub$suffix"
fi

# The tag stream of a file: the extended attribute on Linux; Wine keeps the NTFS stream as a
# file named "<file>:ZelTag5".
tag_hex() {
    if [[ -e "$1:ZelTag5" ]]; then
        od -An -tx1 -v "$1:ZelTag5" | tr -d ' \n'
    else
        getfattr --only-values -n user.ZelTag5 "$1" 2>/dev/null | od -An -tx1 -v | tr -d ' \n'
    fi
}
# The 16 bytes of an identifier: its first three groups little-endian, the rest as written.
guid_hex() {
    local g=${1//-/}
    echo "${g:6:2}${g:4:2}${g:2:2}${g:0:2}${g:10:2}${g:8:2}${g:14:2}${g:12:2}${g:16:16}"
}

check_tree() {
    local out=$1
    diff -r -x "*:ZelTag5" data/reports "$out/reports" || fail "$out/reports differs from what was packed"
    [[ -d "$out/reports/none" ]] || fail "the empty folder is missing from $out"
    [[ "$(tag_hex "$out/reports/2021/a.txt")" == "$(guid_hex $finance)$(guid_hex $legal)" ]] ||
        fail "tag stream of $out/reports/2021/a.txt: $(tag_hex "$out/reports/2021/a.txt")"
    [[ "$(tag_hex "$out/reports/notes/résumé.txt")" == "$(guid_hex $legal)" ]] ||
        fail "tag stream of résumé.txt"
    [[ -z "$(tag_hex "$out/reports/notes/blob.bin")" ]] || fail "blob.bin has a tag stream"
}

# Targets are given as absolute paths, as the dialog gives them: the tag stream is opened by a
# long path ("\\?\" in front), which a relative path can't take. Wine's drive Z: is the root.
target() {
    if [[ ${#runner[@]} -gt 0 ]]; then
        local path="$PWD/$1"
        echo "Z:${path//\//\\}"
    else
        echo "$PWD/$1"
    fi
}

# The self-extracting file run as itself, with the recipient's key.
chmod +x "$archive"
"${runner[@]}" "./$archive" -key key.privkey -target "$(target by-key)" >stub.out 2>&1 || true
check_tree by-key
# The plain stub reading the archive through -source.
chmod +x "stub$suffix"
"${runner[@]}" "./stub$suffix" -key key.privkey -target "$(target by-source)" -source "$archive" \
    >>stub.out 2>&1 || true
check_tree by-source
# The Windows stub is a GUI program: under Wine it has no parent console to write to.
[[ ${#runner[@]} -gt 0 || "$(grep -c "Extraction has successfully finished" stub.out)" == 2 ]] ||
    fail "the stub did not report both extractions: $(cat stub.out)"
# dcf reads the same file with the password.
"$dcf" extract "$archive" -C by-password --password-file password --quiet
check_tree by-password
if [[ ${stub_option[0]:-} == --stub ]]; then
    echo "end to end: $(basename "$stub") extracted and tagged"
else
    echo "end to end: the shipped $stub stub extracted and tagged"
fi
