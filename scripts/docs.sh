#!/usr/bin/env bash
# Makes one site of the guides and the reference, with a search, in build/docs: open build/docs/index.html. Any warning of
# Doxygen is an error.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v doxygen >/dev/null || scripts/install-deps.sh docs
rm -rf build/docs
python3 -B scripts/docs-site.py build/docs/pages
QXBC_VERSION=$(sed -n 's/^#define QX_BACKGROUNDCORRECTION_VERSION_[MP][A-Z]* \([0-9]*\)$/\1/p' \
    include/QX_BackgroundCorrection.h | paste -sd .)
export QXBC_VERSION
doxygen docs/Doxyfile
cp docs/*.svg docs/*.png build/docs
rm -rf build/docs/pages
echo "build/docs/index.html"
