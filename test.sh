#!/usr/bin/env bash
# test.sh [PRESET...]: installs what the tests need, then configures, builds and tests the presets (default: release). The
# last lines are ctest's. Works from a clean clone on Debian 12.
set -euo pipefail
cd "$(dirname "$0")"
tools/install-deps.sh test

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release)
for preset in "${presets[@]}"; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$(nproc)"
  if [ "$preset" = release ]; then
    # Public headers compile on their own.
    cmake --build --preset "$preset" --target all_verify_interface_header_sets
  fi
  ctest --preset "$preset" -j "$(nproc)"
done
