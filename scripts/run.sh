#!/usr/bin/env bash
# Sets up, builds what ships (scripts/build.sh release), installs it into build-release/installed
# as a package would, and runs the sender's road on the built-in example (scripts/demo.sh).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
scripts/setup.sh
scripts/build.sh release >/dev/null
installed="$root/build-release/installed"
rm -rf "$installed"
cmake --install build-release --prefix "$installed/usr" --strip >/dev/null
scripts/demo.sh "$installed/usr"
