#!/usr/bin/env bash
# What takes too long for ./test.sh, for when compilers, kernels or types change, and before a release: the unit tests on
# 64-bit ARM (under qemu), where nothing is optimised, and where plain char is unsigned. On x86 it is signed in all other
# presets, on ARM unsigned. And Clang's optimised code for Linux, which ./test.sh runs under the sanitizers only.
set -euo pipefail
exec "$(dirname "$0")/../test.sh" linux-arm64 linux-clang linux-debug linux-unsigned-char
