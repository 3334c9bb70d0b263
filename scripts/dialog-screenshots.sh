#!/usr/bin/env bash
# Pictures of the Windows extraction dialog in each of its languages, taken under Wine on a
# virtual display, into docs/dialog/ as PNG files.
# Usage: scripts/dialog-screenshots.sh WINDOWS_BUILD_DIR   (a tree made with cmake/mingw-x86_64.cmake)
set -euo pipefail
build=$(cd "${1:?usage: scripts/dialog-screenshots.sh WINDOWS_BUILD_DIR}" && pwd)
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$build/wineprefix}
ninja -C "$build" dialog_screenshots
# Without a window manager on the virtual display, Wine draws the title bars itself.
"$root/scripts/wine-run.sh" reg add 'HKCU\Software\Wine\X11 Driver' /v Decorated /d N /f >/dev/null
wineserver -w
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && xvfb-run -a -s "-screen 0 1024x768x24" \
    "$root/scripts/wine-run.sh" "$build/tools/dialog-screenshots/dialog_screenshots.exe")
mkdir -p "$root/docs/dialog"
for picture in "$work"/*.bmp; do
    name=$(basename "$picture" .bmp)
    python3 "$root/scripts/bmp-to-png.py" "$picture" "$root/docs/dialog/$name.png"
done
ls -1 "$root/docs/dialog"
