// The harness of the benchmarks. A row names a kernel, measures our call and the peers' calls in turns on one core, and
// prints one CSV line `kernel,params,ours_ns,peer,peer_ns,ratio,goal`. Times are nanoseconds of thread CPU time per
// sample, minima over all turns; the peer of the line is the fastest one; ratio and goal are ours / peer, and the goal
// is empty where there is none. Peers of other programs are joined by run.sh, by kernel and params.
//
//   int main(int argc, char** argv) {
//     passband::bench::Rows rows(argc, argv);
//     const auto x = passband::bench::Noise<float>(4096);
//     std::vector<float> y(x.size());
//     rows.Measure("scale", "type=f32;block=4096", {.samples = 4096, .goal = 0.5}, [&] { Scale(x, y); },
//                  {{"plain", [&] { PlainScale(x, y); }}});
//   }
//
// A call handed to Measure should last a microsecond or more (walk a longer signal in blocks), so that calling it
// through std::function and reading the clock do not count. Setup stands before Measure; data must neither grow nor
// sink into denormals over millions of calls. Arguments of the program: a text that kernel,params must contain, and
// `--turns N` (default 60).
#pragma once

#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "passband/foundation/element_types.h"

namespace passband::bench {

/// A competitor of our call on the same work.
struct Peer {
  std::string name;
  std::function<void()> call;
  double samples = 0;  ///< samples that one call makes, when it is not the row's number
};

struct RowOptions {
  double samples = 1;  ///< samples (outputs, steps) that one call makes; the printed time is per sample
  double goal = 0;     ///< the ratio ours / fastest peer to stay below; 0 when there is none
};

/// CPU time of this thread in nanoseconds.
inline double ThreadNanoseconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
}

/// Keeps the optimiser from removing work whose result nobody reads.
template <class T>
void Keep(const T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

class Rows {
 public:
  Rows(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
      const std::string argument = argv[i];
      if (argument == "--turns" && i + 1 < argc) {
        turns_ = std::max(1, std::atoi(argv[++i]));
      } else {
        only_ = argument;
      }
    }
  }

  /// False when the program's arguments leave this row out; for skipping a costly setup.
  bool Wanted(const std::string& kernel, const std::string& params) const {
    return (kernel + "," + params).find(only_) != std::string::npos;
  }

  /// Measures one row and prints its line.
  void Measure(const std::string& kernel, const std::string& params, RowOptions options, std::function<void()> ours,
               std::vector<Peer> peers) const {
    if (!Wanted(kernel, params)) return;
    peers.insert(peers.begin(), Peer{"", std::move(ours)});
    std::vector<long> calls;
    for (Peer& peer : peers) {
      calls.push_back(CallsPerTurn(peer.call));
      if (peer.samples == 0) peer.samples = options.samples;
    }
    std::vector<double> best(peers.size(), std::numeric_limits<double>::infinity());
    const double start = ThreadNanoseconds();
    for (int turn = 0; turn < turns_ && (turn < 3 || ThreadNanoseconds() - start < kRowNanoseconds); ++turn) {
      for (std::size_t k = 0; k < peers.size(); ++k) {
        best[k] = std::min(best[k], Time(peers[k].call, calls[k]) / peers[k].samples);
      }
    }
    Print(kernel, params, options.goal, peers, best);
  }

 private:
  static constexpr double kTurnNanoseconds = 1e5;  // long against the clock, short against the scheduler
  static constexpr double kRowNanoseconds = 1e9;   // no row takes much longer, however slow a peer is

  static double Time(const std::function<void()>& call, long calls) {
    const double start = ThreadNanoseconds();
    for (long i = 0; i < calls; ++i) call();
    return (ThreadNanoseconds() - start) / static_cast<double>(calls);
  }

  static long CallsPerTurn(const std::function<void()>& call) {
    call();  // the first call chooses an instruction set and touches its memory
    for (long calls = 1;; calls *= 4) {
      const double each = Time(call, calls);
      if (each * static_cast<double>(calls) > kTurnNanoseconds / 4) {
        return std::max(1L, static_cast<long>(kTurnNanoseconds / each));
      }
    }
  }

  static void Print(const std::string& kernel, const std::string& params, double goal, const std::vector<Peer>& peers,
                    const std::vector<double>& best) {
    std::printf("%s,%s,%.5g,", kernel.c_str(), params.c_str(), best[0]);
    const auto fastest = std::min_element(best.begin() + 1, best.end());
    if (fastest == best.end()) {
      std::printf(",,,");
    } else {
      const std::string& name = peers[static_cast<std::size_t>(fastest - best.begin())].name;
      std::printf("%s,%.5g,%.4g,", name.c_str(), *fastest, best[0] / *fastest);
    }
    if (goal > 0) std::printf("%.4g", goal);
    std::printf("\n");
    std::fflush(stdout);
  }

  std::string only_;
  int turns_ = 60;
};

/// White noise in -1 .. 1, parts of complex elements independent; the same values on every run.
template <Element T>
std::vector<T> Noise(std::size_t count, unsigned seed = 1) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<T> x(count);
  for (T& v : x) {
    const auto re = static_cast<RealOf<T>>(uniform(engine));
    if constexpr (IsComplex<T>) {
      v = T(re, static_cast<RealOf<T>>(uniform(engine)));
    } else {
      v = re;
    }
  }
  return x;
}

/// Taps of a Hamming-windowed ideal lowpass with its cut-off at `cutoff` of the sampling frequency.
template <Element T>
std::vector<T> Lowpass(std::size_t taps, double cutoff = 0.125) {
  std::vector<T> h(taps);
  const double centre = static_cast<double>(taps - 1) / 2;
  for (std::size_t n = 0; n < taps; ++n) {
    const double t = static_cast<double>(n) - centre;
    const double phase = 2 * std::numbers::pi * cutoff * t;
    const double sinc = t == 0 ? 2 * cutoff : std::sin(phase) / (std::numbers::pi * t);
    const double window = taps > 1 ? 0.54 + 0.46 * std::cos(std::numbers::pi * t / centre) : 1;
    h[n] = T(static_cast<RealOf<T>>(sinc * window));
  }
  return h;
}

/// The short name of an element type in `params`: f32, f64, c32, c64.
template <Element T>
const char* TypeName() {
  constexpr bool kDouble = IsDoublePrecision(PrecisionOf<T>);
  if constexpr (IsComplex<T>) return kDouble ? "c64" : "c32";
  return kDouble ? "f64" : "f32";
}

}  // namespace passband::bench
