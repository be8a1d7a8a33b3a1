#!/usr/bin/env bash
# Builds all packages into dist/, and tries them: a consumer of each, what the binaries are hardened with, Debian's
# rules, the checksums. The same commit gives the same bytes, on the same machine, each time.
#   scripts/package.sh           builds
#   QXBC_MAINTAINER="Name <address>" scripts/package.sh   with this maintainer instead of the placeholder
#   scripts/package.sh --twice   builds a second time from nothing and compares
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/helpers.sh
[ $# = 0 ] || [ "$*" = --twice ] || { echo "usage: scripts/package.sh [--twice]" >&2; exit 2; }
scripts/install-deps.sh test

# Files in packages are as old as the last commit; without git, as the changelog.
[ -n "${SOURCE_DATE_EPOCH:-}" ] ||
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null) || SOURCE_DATE_EPOCH=$(stat -c %Y CHANGELOG.md)
export SOURCE_DATE_EPOCH LC_ALL=C TZ=UTC
umask 022

# Leaves the packages, and nothing else, in a folder.
build_into() {
    local folder=$1 preset
    rm -rf "$folder"
    mkdir -p "$folder"
    rm -rf build/package-windows-tool
    patiently "configuring package-windows-tool" cmake --preset package-windows-tool
    patiently "building package-windows-tool" cmake --build --preset package-windows-tool -j "$(nproc)"
    for preset in package-linux package-windows; do
        rm -rf "build/$preset"
        workbench=()
        [ "$preset" != package-windows ] ||
            workbench=(-D "QXBC_WINDOWS_WORKBENCH=$PWD/build/package-windows-tool/bin")
        patiently "configuring $preset" cmake --preset "$preset" ${workbench[@]+"${workbench[@]}"} \
            ${QXBC_MAINTAINER:+-D "QXBC_MAINTAINER=$QXBC_MAINTAINER"}
        patiently "building $preset" cmake --build --preset "$preset" -j "$(nproc)"
        patiently "packing $preset" cpack --config "build/$preset/CPackConfig.cmake" -B "$PWD/build/$preset/packages"
        find "build/$preset/packages" -maxdepth 1 -type f -exec cp -p {} "$folder" \;
    done
    (cd "$folder" && sha256sum -- *.deb *.tar.gz *.zip >SHA256SUMS)
}

say "Packages of $(date -u -d "@$SOURCE_DATE_EPOCH" '+%F %T') UTC"
build_into dist

say "Trying them"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for way in archive deb; do
    cmake -D "WAY=$way" -D "PACKAGES=$PWD/dist" -D "BUILD=$PWD/build/package-linux" -D "SOURCE=$PWD" \
        -D "SCRATCH=$scratch/$way" -D "COMPILER=$(command -v g++)" -P tests/package/Consume.cmake
    echo "$way: a consumer was built and run"
done
cmake -D "PACKAGES=$PWD/dist" -D "SOURCE=$PWD" -D "SCRATCH=$scratch/zip" -D "WINE=$PWD/scripts/run-wine.sh" \
    -P tests/package/ConsumeZip.cmake
echo "zip: the checksums are those of its files, and hosts were built and run under Wine"
tests/structure/check_hardening.py --commands build/package-linux/compile_commands.json \
    "$scratch"/deb/unpacked/usr/lib/*.so "$scratch"/deb/unpacked/usr/bin/qxbackground \
    "$scratch"/archive/unpacked/*/lib/*.so "$scratch"/archive/unpacked/*/bin/qxbackground \
    "$scratch"/zip/unpacked/*/bin/*.dll

find "$scratch" -path '*/bin/qxbackground.exe' -exec tests/structure/check_hardening.py {} +
find "$scratch" -path '*/bin/qxbackground.exe' -exec tests/package/try-windows-workbench.sh {} "$scratch" \; | grep .
echo "zip: its workbench runs under Wine"

if [ "$*" = --twice ]; then
    say "A second time"
    export CCACHE_DISABLE=1 # what a cache remembers is the same in any case
    build_into "$scratch/second"
    diff dist/SHA256SUMS "$scratch/second/SHA256SUMS"
    echo "the same bytes"
fi

say "In dist/"
cat dist/SHA256SUMS
