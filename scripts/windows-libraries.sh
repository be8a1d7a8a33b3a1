#!/usr/bin/env bash
# Builds what the workbench for Windows is linked with: libtiff and libpng out of Debian's source packages, with MinGW, as
# static libraries. zlib, and the headers that need no building, come from Debian's packages.
#
# Prints the folder where all of it lies, under build/windows-libraries/. Its name stands for what it was built from: the
# versions, the compiler and this script. What has been built is not built again, and needs no network.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
home=$root/build/windows-libraries
mkdir -p "$home"

# One at a time: two configured presets may ask at once.
exec 9>"$home/.lock"
flock 9

debian_packages="libz-mingw-w64-dev libcli11-dev libfmt-dev nlohmann-json3-dev mingw-w64-x86-64-dev
    gcc-mingw-w64-x86-64-posix"
key=$({
    # shellcheck disable=SC2086
    dpkg-query -W $debian_packages
    cat "${BASH_SOURCE[0]}" "$root/cmake/toolchain-mingw.cmake"
} | sha256sum | cut -c 1-16)
result=$home/$key
if [ -f "$result/complete" ]; then
    echo "$result"
    exit
fi

say() { echo "windows-libraries: $*" >&2; }
work=$home/work
log=$home/log.txt
rm -rf "$work"
mkdir -p "$work/apt/lists/partial" "$work/apt/cache/archives/partial" "$work/tree"
: >"$log"

# Runs what says much; the end of it appears when it fails.
quietly() {
    if ! "$@" >>"$log" 2>&1 9>&-; then
        tail -n 40 "$log" >&2
        say "failed: $*"
        exit 1
    fi
}

# The sources of the same releases that this machine's packages come from, in lists of their own: the machine's are not
# touched.
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
list_releases() {
    apt-get indextargets --format '$(ORIGIN) $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        sed -n "s|^Debian \(.*\)|deb-src [signed-by=$keyring] \1|p" | sort -u >"$work/apt/sources.list"
    [ -s "$work/apt/sources.list" ]
}
# A machine that has never fetched its lists does not know whose they are.
list_releases || { quietly $([ "$(id -u)" = 0 ] || echo sudo -n) apt-get -q update && list_releases; } ||
    { say "apt knows no Debian release: run 'apt-get update'"; exit 1; }
settings=(-o "Dir::Etc::sourcelist=$work/apt/sources.list" -o Dir::Etc::sourceparts=-
    -o "Dir::State::lists=$work/apt/lists" -o "Dir::Cache=$work/apt/cache" -o APT::Sandbox::User=root)
say "fetching lists of sources"
quietly apt-get "${settings[@]}" -q update

# The newest version whose sources are all served is taken; where no packaging is, what it was made of. apt checks the
# signatures and the sums of all of it.
fetch() {
    local package=$1 version versions
    versions=$(apt-cache "${settings[@]}" showsrc "$package" | sed -n 's/^Version: //p' | sort -uVr)
    mkdir -p "$work/$package"
    cd "$work/$package"
    for version in $versions; do
        if apt-get "${settings[@]}" -q source --download-only "$package=$version" >>"$log" 2>&1; then
            tar -xf ./*.orig.tar.*
            tar -xf ./*.debian.tar.*
            mv debian packaging
            local source
            source=$(find . -mindepth 1 -maxdepth 1 -type d ! -name packaging)
            grep -vE '^ *(#|$)' packaging/patches/series | while read -r patch _; do
                quietly patch -d "$source" -p 1 -i "$PWD/packaging/patches/$patch"
            done
            mv "$source" source
            echo "$version" >version
            return
        fi
    done
    for version in $versions; do
        rm -f ./*
        if apt-get "${settings[@]}" -q source --tar-only --download-only "$package=$version" >>"$log" 2>&1; then
            tar -xf ./*.orig.tar.*
            mv "$(find . -mindepth 1 -maxdepth 1 -type d)" source
            echo "${version%-*}, without Debian's changes, which are not served" >version
            return
        fi
    done
    tail -n 20 "$log" >&2
    say "no version of $package can be fetched; is there a network?"
    exit 1
}

# build PACKAGE CMAKE-ARGUMENTS...
build() {
    local package=$1
    shift
    say "building $package ($(cat "$work/$package/version"))"
    quietly cmake -S "$work/$package/source" -B "$work/$package/build" -G Ninja \
        -D CMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw.cmake" -D CMAKE_BUILD_TYPE=Release \
        -D CMAKE_C_FLAGS="-O2 -DNDEBUG -fstack-protector-strong -ffile-prefix-map=$work=." \
        -D CMAKE_INSTALL_PREFIX="$work/tree" -D CMAKE_INSTALL_LIBDIR=lib -D BUILD_SHARED_LIBS=OFF "$@"
    quietly cmake --build "$work/$package/build" --target install
}

for package in tiff libpng1.6; do
    fetch "$package"
done
tree=$work/tree
mkdir -p "$tree/include" "$tree/lib"

build tiff -D tiff-tools=OFF -D tiff-tests=OFF -D tiff-contrib=OFF -D tiff-docs=OFF -D cxx=OFF -D zlib=ON -D jpeg=OFF \
    -D old-jpeg=OFF -D jbig=OFF -D lerc=OFF -D libdeflate=OFF -D lzma=OFF -D zstd=OFF -D webp=OFF
build libpng1.6 -D PNG_SHARED=OFF -D PNG_STATIC=ON -D PNG_EXECUTABLES=OFF -D PNG_TESTS=OFF

# Headers alone, from where native builds have them, without all else that lies there.
for folder in CLI fmt nlohmann; do
    cp -r "/usr/include/$folder" "$tree/include/$folder"
done

# What has to be told to whoever gets the program.
notices=$tree/third-party-notices.txt
notice() {
    printf '\n\n==== %s\n\n' "$1" >>"$notices"
    cat -- "${@:2}" >>"$notices"
}
debian_version() { dpkg-query -W -f '${source:Upstream-Version}' "$1"; }
echo "qxbackground.exe holds parts of these works. Each is used as its licence, which follows, allows." >"$notices"
notice "libtiff $(cat "$work/tiff/version")" "$work/tiff/source/LICENSE.md"
notice "libpng $(cat "$work/libpng1.6/version")" "$work/libpng1.6/source/LICENSE"
notice "zlib $(debian_version libz-mingw-w64-dev)" /usr/share/doc/libz-mingw-w64-dev/copyright
notice "CLI11 $(debian_version libcli11-dev)" /usr/share/doc/libcli11-dev/copyright
notice "{fmt} $(debian_version libfmt-dev)" /usr/share/doc/libfmt-dev/copyright
notice "JSON for Modern C++ $(debian_version nlohmann-json3-dev)" /usr/share/doc/nlohmann-json3-dev/copyright
notice "GCC's runtime libraries" /usr/share/doc/gcc-mingw-w64-base/copyright
notice "MinGW-w64's runtime libraries, winpthreads among them" /usr/share/doc/mingw-w64-x86-64-dev/copyright

touch "$tree/complete"
rm -rf "$result"
mv "$tree" "$result"
rm -rf "$work"
find "$home" -mindepth 1 -maxdepth 1 -type d ! -path "$result" -exec rm -rf {} + # of older versions
say "done"
echo "$result"
