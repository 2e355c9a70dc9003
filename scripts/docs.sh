#!/usr/bin/env bash
# Generates the API reference of the public headers, with the host guide as its main page, into
# <build>/docs/html. Fails when doxygen warns (an undocumented member, a broken comment).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
build=${VX_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
out="$build/docs"
rm -rf "$out"
mkdir -p "$out"
doxygen "$build/Doxyfile"
if [ -s "$out/warnings.log" ]; then
  cat "$out/warnings.log" >&2
  echo "docs: $(wc -l <"$out/warnings.log") warning lines, see above" >&2
  exit 1
fi
echo "docs: no warnings; open $out/html/index.html"
