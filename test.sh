#!/usr/bin/env bash
# Installs what is missing, builds the release preset and runs every test; arguments go to ctest.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")"
scripts/install-packages build test
scripts/build release
ctest --preset release --output-on-failure "$@"
