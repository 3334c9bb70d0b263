#!/usr/bin/env bash
# Installs every Debian package the project needs: native build and tests, the Windows
# cross-build and Wine, fuzzing and sanitizers, benchmarks. Idempotent and quiet when all is there.
set -euo pipefail

packages=(
    cmake ninja-build ccache g++ pkg-config
    zlib1g-dev libpugixml-dev libcli11-dev nlohmann-json3-dev
    googletest libgtest-dev libgmock-dev libbenchmark-dev
    libssl-dev libcrypto++-dev openssl
    clang libclang-rt-14-dev
    g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix libz-mingw-w64-dev
    wine wine64 xvfb xauth
    attr hyperfine 7zip pigz
    libdeflate-dev
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed"; then
        missing+=("$package")
    fi
done

if ((${#missing[@]} > 0)); then
    echo "setup: installing ${missing[*]}"
    sudo_cmd=()
    if [[ $(id -u) -ne 0 ]]; then
        sudo_cmd=(sudo)
    fi
    "${sudo_cmd[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
fi
