#!/usr/bin/env bash
# Follows docs/getting-started-linux.md as a new user would: each of its ways in an empty Debian 12 of its own, with the
# packages of dist/ and nothing else. Wants root (for chroot), the network, and the packages (scripts/package.sh).
# The empty Debian and what apt fetched stay in build/try-guides, so that the second run is quick.
#   scripts/try-guides.sh [MIRROR]    by default the mirror that this machine's apt uses
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/helpers.sh
[ "$(id -u)" = 0 ] || { echo "scripts/try-guides.sh has to be run by root, for chroot" >&2; exit 1; }
compgen -G 'dist/*.deb' >/dev/null || { echo "there are no packages in dist/; scripts/package.sh makes them" >&2; exit 1; }
scripts/install-deps.sh docs
mirror=${1:-$(cat /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null |
    grep -oEm 1 'https?://[^ ]*/debian/?( |$)' || true)}
place=$PWD/build/try-guides
mkdir -p "$place/archives"

if [ ! -e "$place/base/complete" ]; then
    rm -rf "$place/base"
    patiently "making an empty Debian 12" debootstrap --variant=minbase bookworm "$place/base" \
        "${mirror:-http://deb.debian.org/debian}"
    patiently "fetching package lists" chroot "$place/base" apt-get update
    touch "$place/base/complete"
fi

root=
leave() {
    [ -n "$root" ] || return 0
    cp -n "$root"/var/cache/apt/archives/*.deb "$place/archives" 2>/dev/null || true
    umount "$root/proc" 2>/dev/null || true
    umount "$root" 2>/dev/null || true
    rm -rf "$place/run"
    root=
}
trap leave EXIT

# follow SESSION PACKAGE...: the guide's session in an empty Debian, from a folder that holds the packages.
follow() {
    local session=$1
    shift
    say "An empty Debian 12, and the guide's way with the $session"
    # What is written goes into a layer above the empty Debian, or where layers are not to be had, into a copy.
    rm -rf "$place/run"
    mkdir -p "$place/run/changes" "$place/run/work" "$place/run/root"
    root=$place/run/root
    mount -t overlay overlay -o "lowerdir=$place/base,upperdir=$place/run/changes,workdir=$place/run/work" "$root" \
        2>/dev/null || cp -a "$place/base/." "$root"
    mount -t proc proc "$root/proc" # the loader asks it where a program lies
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    cp "$place"/archives/*.deb "$root/var/cache/apt/archives" 2>/dev/null || true
    echo 'Binary::apt-get::APT::Keep-Downloaded-Packages "true";' >"$root/etc/apt/apt.conf.d/keep"
    mkdir "$root/root/new-user"
    cp "$@" "$root/root/new-user"
    patiently "following the guide" replay "$session" || { cat "$place/said" && false; }
    cat "$place/said"
    leave
}
replay() {
    scripts/replay-guide.py docs/getting-started-linux.md "$1" /root/new-user --root "$root" >"$place/said"
}

follow packages dist/*.deb
follow archive dist/*-linux-x86_64.tar.gz
say "Both ways lead to a corrected image and a first host"
