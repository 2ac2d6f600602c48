#include <cmath>
#include <string>
#include <vector>

#include "failure.h"
#include "fir_methods.h"
#include "fir_type.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

const FirType& WindowedType(TapDesign& design) {
  const FirType& type = FirTypeFromName(design.options.type);
  if (type.only_remez) Fail("--type: a {} is designed by --method remez", type.name);
  design.record["type"] = type.name;
  return type;
}

// The edges as the library takes them, after the checks. By formulas for Kaiser's window a type is described by the ends
// of its transition bands, otherwise its cut-offs do.
std::vector<double> EdgesOf(const TapDesign& design, const FirType& type, bool by_formulas) {
  const double rate_hz = design.set.rate_hz;
  const std::string& method = design.options.method;
  std::vector<double> edges = design.options.edges_hz;
  CheckFrequencies("--edges", edges, rate_hz);
  if (type.cutoffs == 0) {
    if (by_formulas && edges.size() != 1 && edges.size() != 2) {
      Fail("--edges: a {} by {} takes 1 frequency, the upper end of its band; {} given", type.name, method,
           edges.size());
    }
    if (by_formulas && !(edges[0] < rate_hz / 2)) {
      Fail("--edges: the band of a {} ends below half the rate", type.name);
    }
    if (edges.empty()) return {0.0};  // the window method uses none, but wants to see one
    edges.resize(by_formulas ? 2 : 1, rate_hz / 2);
    return edges;
  }
  const std::size_t most = 2 * type.cutoffs;
  if (by_formulas && edges.size() != most) {
    Fail("--edges: a {} by {} takes {} frequencies, the ends of its transition bands; {} given", type.name, method,
         most, edges.size());
  }
  if (edges.size() != most && edges.size() != type.cutoffs) {
    Fail("--edges: a {} takes {} or {} frequencies; {} given", type.name, type.cutoffs, most, edges.size());
  }
  return edges;
}

void RecordRipple(TapDesign& design, double ripple) {
  design.record["ripple"] = ripple;
  design.record["attenuation_db"] = -20 * std::log10(ripple);
}

void RefuseLongest(const TapDesign& design) {
  if (design.set.taps.Length() < kMostTaps) return;
  Fail("the filter would need {} taps or more; widen its transition bands or ask for less attenuation", kMostTaps);
}

}  // namespace

void DesignByWindow(TapDesign& design) {
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  const FirType& type = WindowedType(design);
  if (!options.length) Fail("--length is required with --method window");
  set.edges_hz = EdgesOf(design, type, false);
  const std::int32_t length = *options.length;
  if (length < 4 || length > kMostTaps) Fail("--length: {} is not between 4 and {}", length, kMostTaps);
  const std::string name = options.window.value_or("hamming");
  const TSignalWindowType window = WindowFromName(name);
  const double param = WindowParam(window, name, options.param);
  if (OddOnly(type) && length == kMostTaps) {
    Fail("--length: a {} of more than {} taps would be needed", type.name, kMostTaps);
  }
  set.taps.Size(length, false, design.is_double);
  FirImpulse(set.taps, set.edges_hz, param, type.type, window, options.gain, set.rate_hz);
  if (set.taps.Length() != length) {
    fmt::print(stderr, "passband: note: a {} cannot have {} taps; it has {}\n", type.name, length, set.taps.Length());
  }
  design.record["window"] = SignalWindowToString(window);
  if (param != 0) design.record["window_parameter"] = param;
}

void DesignByKaiser(TapDesign& design) {
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  const FirType& type = WindowedType(design);
  if (options.odd && EvenOnly(type)) Fail("--odd: a {} has an even number of taps", type.name);
  set.edges_hz = EdgesOf(design, type, true);
  const double ripple = RippleOf(options);
  KaiserImpulse(set.taps, set.edges_hz, ripple, type.type, options.gain, set.rate_hz, options.odd);
  RefuseLongest(design);
  RecordRipple(design, ripple);
}

void DesignFractional(TapDesign& design) {
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  const FirType& type = WindowedType(design);
  if (!options.fraction) Fail("--fraction is required with --method fractional");
  const double fraction = *options.fraction;
  if (!(fraction >= 0 && fraction <= 1)) Fail("--fraction: {} is not between 0 and 1", fraction);
  // Their allpass part stands at one sample, which has to be met.
  const bool has_allpass = type.type == TFilterType::ftHighpass || type.type == TFilterType::ftBandstop;
  if (has_allpass && fraction > 0 && fraction < 1) Fail("--fraction: a {} delays by whole samples only", type.name);
  set.edges_hz = EdgesOf(design, type, true);
  const double ripple = RippleOf(options);
  // Taps that begin by `Offset` samples later delay by as much less.
  FractionalKaiserImpulse(set.taps, set.edges_hz, ripple, 1 - fraction, 1, type.type, false, options.gain, set.rate_hz);
  RefuseLongest(design);
  design.record["fraction"] = fraction;
  RecordRipple(design, ripple);
}

}  // namespace passband_cli
