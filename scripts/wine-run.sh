#!/usr/bin/env bash
# Runs a Windows program under Wine in the project's prefix for its width, made on first use:
# build-wine/win32 (WINEARCH=win32) for an i686 program, build-wine/win64 (WINEARCH=win64) for an
# x86_64 one and for commands that are no program file. WINEPREFIX and WINEARCH, when set, stay.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

# The machine field of a PE file's header: 14c for i386, 8664 for x86-64.
pe_machine() {
    local header
    header=$(od -An -tu4 -j60 -N4 "$1" 2>/dev/null | tr -d ' ') || return 0
    [[ -n "$header" ]] && od -An -tx2 -j$((header + 4)) -N2 "$1" 2>/dev/null | tr -d ' '
}
width=64
if [[ -f "${1:-}" && "$(pe_machine "$1")" == 014c ]]; then
    width=32
fi
export WINEARCH=${WINEARCH:-win$width}
# Debian's 32-bit Wine loader, of the package wine32:i386; without it wine64 runs everything.
if [[ $WINEARCH == win32 && ! -x /usr/lib/wine/wine ]]; then
    echo "wine-run.sh: $1 is a 32-bit program and 32-bit Wine is missing: install wine32:i386" \
         "beside wine64 (scripts/setup.sh does)" >&2
    exit 1
fi
export WINEPREFIX=${WINEPREFIX:-$root/build-wine/win$width}
export WINEDEBUG=${WINEDEBUG:--all}
if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
    mkdir -p "$WINEPREFIX"
    # Tests run in parallel: one of them makes the prefix while the others wait.
    (
        flock 9
        if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
            wineboot --init >/dev/null 2>&1 || true
            wineserver -w || true
        fi
    ) 9>"$WINEPREFIX.lock"
fi
exec wine "$@"
