#!/usr/bin/env bash
# Shows what the library does to camera images: builds the workbench and runs it on a simulated camera and, where the
# data folder is there (QX_SAMPLE_DATA, by default ../shared/data), on real frames. Everything lands in demo-output/.
set -euo pipefail
. "$(dirname "$0")/scripts/helpers.sh"
absolute_sample_data
cd "$(dirname "$0")"
note_foreign_folder

say "Packages (installs what is missing)"
scripts/install-deps.sh build
echo "all there"

say "Building the library and the workbench (the first time takes a minute or two)"
patiently "configuring" cmake --preset linux --log-level=NOTICE
patiently "building" cmake --build --preset linux --target QX_BACKGROUNDCORRECTION qxbackground -- --quiet
echo "build/linux/bin/qxbackground is up to date"

rm -rf demo-output
mkdir demo-output
scripts/demo-steps.sh "$PWD/build/linux/bin" demo-output
