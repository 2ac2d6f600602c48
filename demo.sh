#!/usr/bin/env bash
# Filters a recording to the telephone band, 300 to 3400 Hz, and shows what that did.
#
#   ./demo.sh [RECORDING]
#
# RECORDING is any file that libsndfile reads (wav, flac, aiff, ogg), of any rate from 7000 Hz and any number of
# channels; without it, the spoken "Front center" of Debian's alsa-utils. The results are in demo_output/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
output=demo_output

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }
[[ -t 1 ]] || say() { printf '\n%s\n' "$*"; }
give_up() { echo "demo.sh: $*" >&2; exit 1; }

case ${1:-} in
  -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}"; exit 0 ;;
esac
(( $# <= 1 )) || give_up "one recording at a time, please"
if (( $# == 1 )); then
  [[ -f $1 && -r $1 ]] || give_up "cannot read $1"
  recording=$(realpath -- "$1")
fi
cd "$root"

say "1. Packages and build"
tools/install-deps.sh run
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# What test.sh has built is used; otherwise the tests and their packages are left out.
build=build/release
options=()
if [[ ! -f $build/build.ninja ]]; then
  build=build/demo
  options=(-B "$build" -DPASSBAND_BUILD_TESTS=OFF -DPASSBAND_WERROR=OFF)
fi
passband=$build/apps/passband/passband
build_failed() { tail -n 30 "$log" >&2; give_up "the build failed"; }
cmake --preset release "${options[@]}" >"$log" 2>&1 || build_failed
echo "building (a few minutes the first time) ..."
if [[ -t 1 ]]; then  # the build shows its steps on a terminal
  cmake --build "$build" --target passband_cli || give_up "the build failed"
else
  cmake --build "$build" --target passband_cli >"$log" 2>&1 || build_failed
fi
echo "built: $("$passband" --version)"

if (( $# == 0 )); then
  recording=$(dpkg -L alsa-utils 2>/dev/null | grep '/Front_Center\.wav$' || true)
  [[ -n $recording ]] || give_up "alsa-utils has no Front_Center.wav here; name a recording: ./demo.sh RECORDING"
fi

say "2. The recording"
"$passband" info --in "$recording"
rate=$("$passband" info --in "$recording" --only rate)
if awk -v rate="$rate" 'BEGIN { exit !(rate < 7000) }'; then
  give_up "the telephone band ends at 3400 Hz; a recording of $rate Hz only reaches $(( ${rate%.*} / 2 )) Hz." \
          "It takes one of 7000 Hz or more."
fi

say "3. The filter: a bandpass with a Kaiser window, 60 dB of attenuation, transition bands of 100 Hz"
mkdir -p "$output"
"$passband" design fir --type bandpass --edges 200,300,3400,3500 --attenuation 60 --odd --rate "$rate" \
  --out "$output/taps.json" --plot "$output/response.svg" --log
"$passband" filter --taps "$output/taps.json" --in "$recording" --out "$output/filtered.wav" --align

say "4. Levels before and after"
"$passband" levels --in "$recording" --in "$output/filtered.wav" --band 300,3400 --guard 100
"$passband" plot-spectrum --in "$recording" --in "$output/filtered.wav" --band 300,3400 --out "$output/spectrum.svg"

say "Done. Have a listen and a look, in $root/$output:"
printf '  %s\n' "filtered.wav   the recording, as a telephone would carry it" \
                "response.svg   the magnitude response of the filter" \
                "spectrum.svg   the spectrum before and after" \
                "taps.json      the taps of the filter"
