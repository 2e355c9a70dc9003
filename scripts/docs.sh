#!/usr/bin/env bash
# Generates the API reference of the public headers, with the host guide as its main page, into
# <build>/docs/html. Fails when doxygen warns (an undocumented member, a broken comment).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
build=${VX_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake -DDOXYGEN="$(command -v doxygen)" -DDOXYFILE="$build/Doxyfile" -DOUTPUT_DIR="$build/docs" \
  -P cmake/RunDoxygen.cmake
