#!/usr/bin/env bash
# bench/run.sh [CORE] [ROUNDS]: builds the release preset with the benchmarks, runs ours and the peers in turns on one core
# (default 1; 3 rounds), and prints one line a row, `kernel,params,ours_ns,peer,peer_ns,ratio,goal`: minima in
# nanoseconds of CPU time, the fastest peer, and the goal as a ratio. The last line counts the goals.
set -euo pipefail
cd "$(dirname "$0")/.."
core=${1:-1}
rounds=${2:-3}
tools/install-deps.sh bench >&2
{
  cmake --preset release -DPASSBAND_BUILD_BENCH=ON
  cmake --build --preset release --target benches -j "$(nproc)"
} >&2
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
export OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1
for round in $(seq "$rounds"); do
  echo "round $round of $rounds" >&2
  for bench in build/release/bench/*_bench; do
    taskset -c "$core" "$bench" --turns 20 >"$out/rows_$(basename "$bench")_$round"
  done
  taskset -c "$core" /usr/bin/python3 bench/peers_scipy.py >"$out/peers_$round"
done
/usr/bin/python3 bench/merge_rows.py "$out"/rows_* -- "$out"/peers_*
