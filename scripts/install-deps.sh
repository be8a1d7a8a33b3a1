#!/usr/bin/env bash
# Installs the Debian packages that building and testing need. Does nothing when all are there, so it may be called
# every time. Usage: scripts/install-deps.sh [build|test]   (test includes build)
set -euo pipefail
level=${1:-test}

packages=(git cmake ninja-build g++ libcli11-dev libtiff-dev libpng-dev nlohmann-json3-dev python3)
packages+=(libgtest-dev libgmock-dev libbenchmark-dev) # the presets configure tests and benchmarks as well
if [ "$level" != build ]; then
    # The Microsoft ABI cross build, MinGW for the Windows unit tests, Wine to run both.
    packages+=(clang-19 lld-19 llvm-19 libc++-19-dev libclang-rt-19-dev libwine-dev wine wine64)
    packages+=(mingw-w64-x86-64-dev g++-mingw-w64-x86-64-posix googletest)
    packages+=(clang-format-19 valgrind python3-numpy locales)
    packages+=(libopencv-core-dev libopencv-imgproc-dev) # what the benchmarks compare with
fi

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing ${#missing[@]} packages: ${missing[*]}"
sudo=; [ "$(id -u)" = 0 ] || sudo=sudo
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get install -y --no-install-recommends "${missing[@]}" >/dev/null 2>&1 && exit 0
# The package lists may be missing or old: fetch them and say what goes wrong this time.
$sudo apt-get update -q
$sudo apt-get install -y --no-install-recommends "${missing[@]}"
