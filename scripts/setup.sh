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
    lintian dpkg-dev file bash-completion
)
# The i686 stub runs under 32-bit Wine (multiarch). wine64 and wine32:i386 go in one apt call:
# when the two architectures' lists are out of step, apt would rather remove one to install the other.
wine_packages=(wine64 wine32:i386)

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "ok installed"; }

sudo_cmd=()
if [[ $(id -u) -ne 0 ]]; then
    sudo_cmd=(sudo)
fi
lists_updated=false
# A mirror in the middle of a sync fails one list; the others still serve, and a package that
# can't be had fails its install below.
install_packages() {
    echo "setup: installing $*"
    if ! $lists_updated; then
        "${sudo_cmd[@]}" apt-get update -qq ||
            echo "setup: apt-get update failed for some lists; going on with the lists it has" >&2
        lists_updated=true
    fi
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends \
        "$@" >/dev/null
}

missing=()
for package in "${packages[@]}"; do
    installed "$package" || missing+=("$package")
done
if ((${#missing[@]} > 0)); then
    install_packages "${missing[@]}"
fi

if ! dpkg --print-foreign-architectures | grep -qx i386; then
    echo "setup: adding the i386 architecture (32-bit Wine)"
    "${sudo_cmd[@]}" dpkg --add-architecture i386
    lists_updated=false
fi
# When the security list of one architecture can't be had (a mirror in sync), the other's
# libraries stand at versions that the first lacks, and Multi-Arch wants both at one version. The
# second try takes both widths from the release itself, which always holds both.
install_wine_from_the_release() {
    local preferences
    preferences=$(mktemp)
    printf 'Package: *\nPin: release n=%s\nPin-Priority: 1001\n' \
        "$(. /etc/os-release && echo "$VERSION_CODENAME")" >"$preferences"
    echo "setup: installing ${wine_packages[*]} from the release's own lists"
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq \
        --no-install-recommends --allow-downgrades -o Dir::Etc::Preferences="$preferences" \
        "${wine_packages[@]}" >/dev/null
    local status=$?
    rm -f "$preferences"
    return $status
}
for package in "${wine_packages[@]}"; do
    if ! installed "$package"; then
        install_packages "${wine_packages[@]}" || install_wine_from_the_release ||
            echo "setup: the i386 and amd64 package lists may be out of step (a mirror in sync);" \
                 "run scripts/setup.sh again later" >&2
        break
    fi
done
for package in "${wine_packages[@]}"; do
    if ! installed "$package"; then
        echo "setup: $package is missing; both Wine widths are needed, installed in one call:" \
             "apt-get install ${wine_packages[*]}" >&2
        exit 1
    fi
done
