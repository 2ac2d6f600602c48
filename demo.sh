#!/usr/bin/env bash
# Filters a recording to the telephone band, 300 to 3400 Hz, by two FIR and two IIR filters, and shows what that did.
#
#   ./demo.sh [RECORDING]
#
# RECORDING is any file that libsndfile reads (wav, flac, aiff, ogg), of any rate above 7000 Hz and any number of
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
if awk -v rate="$rate" 'BEGIN { exit !(rate <= 7000) }'; then
  give_up "the telephone band ends at 3400 Hz; a recording of $rate Hz only reaches $(( ${rate%.*} / 2 )) Hz." \
          "It takes one of more than 7000 Hz."
fi

say "3. An FIR filter: a bandpass with a Kaiser window, 60 dB of attenuation, transition bands of 100 Hz"
mkdir -p "$output"
"$passband" design fir --type bandpass --edges 200,300,3400,3500 --attenuation 60 --odd --rate "$rate" \
  --out "$output/taps.json" --plot "$output/response.svg" --log
"$passband" filter --taps "$output/taps.json" --in "$recording" --out "$output/filtered.wav" --align

say "   and the equiripple filter for the same bands: the shortest one"
"$passband" design fir --method remez --type bandpass --edges 200,300,3400,3500 --attenuation 60 --odd --rate "$rate" \
  --out "$output/equiripple.json" --plot "$output/equiripple.svg" --log
"$passband" filter --taps "$output/equiripple.json" --in "$recording" --out "$output/filtered_equiripple.wav" --align

say "4. IIR filters, streamed as second-order sections: a Butterworth filter with transition bands of an octave"
# Near half the sampling rate the octave ends before.
stop=$(awk -v rate="$rate" 'BEGIN { print (0.49 * rate < 6800 ? 0.49 * rate : 6800) }')
smooth=(--type bandpass --edges "150,300,3400,$stop" --ripple 1 --attenuation 60 --rate "$rate")
"$passband" order "${smooth[@]}"
"$passband" design iir --family butterworth "${smooth[@]}" \
  --out "$output/butterworth.json" --plot "$output/butterworth.svg" --log
"$passband" filter --sections "$output/butterworth.json" --in "$recording" --out "$output/filtered_butterworth.wav"

say "   and an elliptic filter for the bands of the FIR filter, with 0.1 dB of ripple"
sharp=(--type bandpass --edges 200,300,3400,3500 --ripple 0.1 --attenuation 60 --rate "$rate")
"$passband" order "${sharp[@]}"
"$passband" design iir --family elliptic "${sharp[@]}" \
  --out "$output/elliptic.json" --plot "$output/elliptic.svg" --log
"$passband" filter --sections "$output/elliptic.json" --in "$recording" --out "$output/filtered_elliptic.wav"

say "5. Levels before and after"
results=(--in "$recording")
for name in filtered filtered_equiripple filtered_butterworth filtered_elliptic; do results+=(--in "$output/$name.wav"); done
"$passband" levels "${results[@]}" --band 300,3400 --guard 100
"$passband" plot-spectrum "${results[@]}" --band 300,3400 --out "$output/spectrum.svg"

say "6. A page on the recording"
"$passband" analyze --in "$recording" --out "$output/analysis.html"

say "Done. Have a listen and a look, in $root/$output:"
printf '  %s\n' "analysis.html             the recording: waveform, spectra, spectrogram, cepstrum; open it in a browser" \
                "filtered.wav              the recording, as a telephone would carry it: by the FIR filter with Kaiser window" \
                "filtered_equiripple.wav   by the equiripple FIR filter" \
                "filtered_butterworth.wav  by the Butterworth filter" \
                "filtered_elliptic.wav     by the elliptic filter" \
                "response.svg              the magnitude response of the FIR filter" \
                "equiripple.svg            that of the equiripple filter" \
                "butterworth.svg           magnitude, phase, group delay, zeros and poles of the Butterworth filter" \
                "elliptic.svg              the same of the elliptic filter" \
                "spectrum.svg              the spectrum before and after all of them" \
                "taps.json, equiripple.json        the taps of the FIR filters" \
                "butterworth.json, elliptic.json   the sections of the IIR filters"
