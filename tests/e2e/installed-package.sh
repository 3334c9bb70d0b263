#!/usr/bin/env bash
# The Debian package as a user gets it: lintian finds no error or warning, it unpacks into a
# scratch root, its dcf tells the package's version, its stubs are the ones its digests name, and
# the installed dcf makes a Windows self-extracting file with no stub option, which the i686 stub
# extracts under 32-bit Wine.
# Usage: installed-package.sh DEB
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
deb=$(realpath "${1:?usage: installed-package.sh DEB}")
fail() { echo "FAILED: $*" >&2; exit 1; }

lintian --fail-on error,warning "$deb" 2> >(grep -v "running with root privileges" >&2)

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
dpkg -x "$deb" "$scratch"
dcf=$scratch/usr/bin/dcf
version=$(dpkg-deb -f "$deb" Version)
[[ "$("$dcf" --version)" == "dcf $version" ]] || fail "dcf --version: $("$dcf" --version)"
(cd "$scratch/usr/lib/dcf/stubs" && sha256sum --quiet --strict -c SHA256SUMS) ||
    fail "the stubs differ from their digests"
# The completion offers the stubs' platforms after --stub-for.
platforms=$(bash -c 'source /usr/share/bash-completion/bash_completion && source "$1" &&
    COMP_WORDS=(dcf create --sfx --stub-for "") && COMP_CWORD=4 && _dcf dcf "" --stub-for &&
    echo "${COMPREPLY[*]}"' completion "$scratch/usr/share/bash-completion/completions/dcf")
[[ $platforms == "windows windows-x64 linux" ]] || fail "completion after --stub-for: $platforms"

"$root/tests/e2e/stub-end-to-end.sh" "$dcf" windows "$root/scripts/wine-run.sh"
echo "package: $(basename "$deb") installs, and its dcf makes what its i686 stub extracts"
