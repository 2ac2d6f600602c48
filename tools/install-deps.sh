#!/usr/bin/env bash
# Installs the Debian packages that Passband is built and run with; does nothing when all of them are there.
#
#   tools/install-deps.sh [run] [test] [bench]
#
#   run    what ./demo.sh needs: compiler, libraries, the recording it filters (the default)
#   test   what ./test.sh needs
#   bench  what bench/run.sh needs
set -euo pipefail

run=(cmake ninja-build g++ pkg-config libhwy-dev libfftw3-dev libeigen3-dev libboost-dev libcli11-dev
     nlohmann-json3-dev libsndfile1-dev libfmt-dev gnuplot-nox alsa-utils)
test=(libgtest-dev libgmock-dev libkissfft-dev python3 chromium)
bench=(libliquid-dev libgsl-dev python3-scipy python3-bottleneck)

wanted=("${run[@]}")
for purpose in "${@:-run}"; do
  case $purpose in
    run) ;;
    test) wanted+=("${test[@]}") ;;
    bench) wanted+=("${bench[@]}") ;;
    -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//p}' "$0"; exit 0 ;;
    *) echo "install-deps.sh: '$purpose' is none of run, test, bench" >&2; exit 1 ;;
  esac
done

if ! command -v dpkg-query >/dev/null; then
  echo "install-deps.sh: this is not a Debian system; please see to the equivalents of: ${wanted[*]}" >&2
  exit 0
fi

missing=()
for package in "${wanted[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ $status == installed ]] || missing+=("$package")
done
if (( ${#missing[@]} == 0 )); then exit 0; fi

as_root=()
if (( EUID != 0 )); then
  if ! command -v sudo >/dev/null; then
    echo "install-deps.sh: as root, please run: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
