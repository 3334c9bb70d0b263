#!/usr/bin/env bash
# Sets up, builds, and runs the main job on a built-in example.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
scripts/setup.sh
scripts/build.sh native Vomdrel dcf >/dev/null
scripts/demo.sh "$root/build"
