#!/usr/bin/env bash
# What ./test.sh does small, with more than a machine's workers hold: 4 GB of images in a zarr store, two dask processes of
# at most 1 GB each. The run is interrupted, gone on with, one worker is killed in the middle, and every frame is compared
# with the one-machine path. Takes minutes, and 9 GB below TMPDIR (/tmp). Build preset linux first.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$PWD/build/linux
export QX_LARGE_RUN=1 QX_SOURCE_DIR=$PWD QX_VERSION=0 PYTHONPATH=$PWD/python PYTHONDONTWRITEBYTECODE=1
export QXBACKGROUND=$build/bin/qxbackground QX_TEST_HOST=$build/bin/tool_test_host
export QX_BACKGROUNDCORRECTION_LIBRARY=$build/lib/libQX_BACKGROUNDCORRECTION_C.so
export OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1
exec /usr/bin/python3 tests/python/test_zarr.py -v \
    Cluster.test_more_than_the_workers_hold_with_a_worker_killed_and_the_run_interrupted
