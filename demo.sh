#!/usr/bin/env bash
# Installs what is missing, builds the library and the program, and runs the demonstration into
# demo-out/.
# Arguments go to `utdata demo`.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")"
scripts/install-packages build
scripts/build demo
build/release/bin/utdata demo --out demo-out --force "$@"
