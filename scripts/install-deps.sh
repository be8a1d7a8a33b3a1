#!/usr/bin/env bash
# Installs the Debian packages that building and testing need. Does nothing when all are there, so it may be called
# every time. Usage: scripts/install-deps.sh [build|test|more]   (each includes those before it; test-more.sh wants more)
set -euo pipefail
level=${1:-test}

packages=(git cmake ninja-build g++ libcli11-dev libfmt-dev libtiff-dev libpng-dev zlib1g-dev nlohmann-json3-dev python3)
packages+=(libjs-chart.js) # goes into the page of "qxbackground report"
packages+=(libgtest-dev libgmock-dev libbenchmark-dev) # the presets configure tests and benchmarks as well
if [ "$level" != build ]; then
    # The Microsoft ABI cross build, MinGW for the Windows unit tests, Wine to run both.
    packages+=(clang-19 lld-19 llvm-19 libc++-19-dev libclang-rt-19-dev libwine-dev wine wine64)
    packages+=(mingw-w64-x86-64-dev g++-mingw-w64-x86-64-posix googletest)
    packages+=(libz-mingw-w64-dev debian-archive-keyring patch) # for the workbench for Windows
    packages+=(ccache clang-format-19 valgrind python3-numpy locales)
    # Other programs that write and read the workbench's formats.
    packages+=(libtiff-tools imagemagick netpbm libcfitsio-bin python3-astropy python3-tifffile)
    packages+=(python3-dask python3-distributed python3-zarr mypy) # the Python package's tests
    packages+=(python3-pip python3-venv python3-setuptools python3-wheel python3-matplotlib)
    packages+=(mono-mcs mono-runtime) # a host in C#
    packages+=(pocl-opencl-icd ocl-icd-opencl-dev opencl-headers opencl-clhpp-headers) # a host whose images live on a GPU
    packages+=(dpkg-dev lintian pkgconf) # to make and to try the packages
    packages+=(man-db mandoc zsh fish) # the manual page and completions are tried in them
    packages+=(chromium poppler-utils) # the page of "qxbackground report" is tried in it, and printed
    command -v npm >/dev/null || packages+=(npm) # brings axe-core, which looks for faults in that page
    packages+=(libopencv-core-dev libopencv-imgproc-dev) # what the benchmarks compare with
fi
if [ "$level" = more ]; then
    packages+=(g++-aarch64-linux-gnu qemu-user) # preset linux-arm64
fi

missing=()
[ "$level" = build ] || packages+=(doxygen) # the site of guides and reference
# Level docs is that site alone, and the empty Debian in which the guides are tried.
[ "$level" != docs ] || packages=(python3 doxygen debootstrap)
for package in "${packages[@]}"; do
    dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

list="${missing[*]}"
stop() {
    echo "$1" >&2
    exit 1
}
command -v apt-get >/dev/null ||
    stop "There is no apt-get here; install what these Debian packages hold, and try again: $list"
sudo=
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null ||
        stop "There is no sudo here; let an administrator run, and try again: apt-get install --no-install-recommends $list"
    sudo=sudo
    # Without a terminal nobody can be asked for the password.
    [ -t 0 ] || sudo -n true 2>/dev/null ||
        stop "sudo wants a password; run, and try again: sudo apt-get install --no-install-recommends $list"
fi

. "$(dirname "$0")/helpers.sh"
echo "Installing ${#missing[@]} packages (a minute or several): $list"
export DEBIAN_FRONTEND=noninteractive
[ -z "$sudo" ] || sudo -v
aptlog=$(mktemp)
trap 'rm -f "$aptlog"' EXIT
install() { $sudo apt-get install -y --no-install-recommends "${missing[@]}" >"$aptlog" 2>&1; }
# The package lists may be missing or old: then they are fetched. Without a network apt tells that for each of them.
update() { $sudo apt-get update -q -o Acquire::Retries=0 -o Acquire::http::Timeout=20 >"$aptlog" 2>&1; }
patiently "installing packages" install && exit 0
patiently "fetching package lists" update || true
patiently "installing packages" install && exit 0
stop "apt-get could not install $list ($(grep -m 1 '^E:' "$aptlog" || echo "it does not say why")); is there a network?"
