#!/usr/bin/env bash
# Runs a Windows executable under Wine with the project's own prefix (created on first use).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build-win64/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
    mkdir -p "$WINEPREFIX"
    wineboot --init >/dev/null 2>&1 || true
    wineserver -w || true
fi
exec wine "$@"
