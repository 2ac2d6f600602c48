#!/bin/sh
# build_and_run.sh COMPILER STAGE OUTPUT: builds host.cpp against the library installed in STAGE by pkg-config alone.
set -eu
here=$(dirname "$0")
pc=$(dirname "$(find "$2" -name passband.pc)")
export PKG_CONFIG_PATH="$pc"
# shellcheck disable=SC2046  # the flags are words
"$1" -std=c++20 "$here/host.cpp" $(pkg-config --cflags --libs passband) \
  -Wl,-rpath,"$(pkg-config --variable=libdir passband)" -o "$3/pkg_config_host"
"$3/pkg_config_host" | grep -x 'FIRTaps.Length = 0'
