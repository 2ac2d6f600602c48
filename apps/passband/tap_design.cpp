#include "tap_design.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include <nlohmann/json.hpp>

#include "failure.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;
using Record = nlohmann::ordered_json;

constexpr std::int32_t kMostTaps = 10000;  // the library's own limit
constexpr double kDefaultAttenuationDb = 60;

struct Type {
  std::string_view name;
  TFilterType type;
  std::size_t cutoffs;  // how many it has; 0: a type without a band
};

constexpr std::array kTypes{
    Type{"lowpass", TFilterType::ftLowpass, 1},
    Type{"highpass", TFilterType::ftHighpass, 1},
    Type{"bandpass", TFilterType::ftBandpass, 2},
    Type{"bandstop", TFilterType::ftBandstop, 2},
    Type{"hilbert3", TFilterType::ftHilbertIII, 0},
    Type{"hilbert4", TFilterType::ftHilbertIV, 0},
    Type{"differentiator3", TFilterType::ftDifferentiatorIII, 0},
    Type{"differentiator4", TFilterType::ftDifferentiatorIV, 0},
};

const Type& TypeFromName(const std::string& name) {
  std::string names;
  for (const Type& type : kTypes) {
    if (type.name == name) return type;
    names += fmt::format("{}{}", names.empty() ? "" : ", ", type.name);
  }
  if (name.empty()) Fail("--type is required: {}", names);
  Fail("--type: '{}' is none of {}", name, names);
}

// Lower case without what people put between words: "Flat-Top" is "flattop".
std::string Plain(std::string_view name) {
  std::string plain;
  for (const char c : name) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return plain;
}

TSignalWindowType WindowFromName(const std::string& name) {
  const TEnumInfo& info = EnumInfo<TSignalWindowType>();
  for (std::size_t k = 0; k < info.ValueNames.size(); ++k) {
    if (Plain(info.ValueNames[k].substr(2)) == Plain(name)) return static_cast<TSignalWindowType>(k);
  }
  Fail("--window: '{}' is not known; see --help for the names", name);
}

double WindowParam(TSignalWindowType window, const std::string& name, const std::optional<double>& param) {
  using enum TSignalWindowType;
  const bool takes_one = window == wtKaiser || window == wtChebyshev || window == wtBlackman || window == wtExponent;
  if (!takes_one) {
    if (param) Fail("--param: the window {} takes none", name);
    return 0;
  }
  if (!param && window == wtBlackman) return -0.16;
  if (!param) Fail("--param is required for the window {}", name);
  if (!std::isfinite(*param)) Fail("--param: {} is not a number the window {} can take", *param, name);
  if (window == wtKaiser && *param < 0) Fail("--param: the beta of a kaiser window is not below 0");
  if (window == wtChebyshev && *param <= 0) Fail("--param: the attenuation of a chebyshev window is above 0 dB");
  if (window == wtExponent && *param <= 0) Fail("--param: the end value of an exponent window is above 0");
  return *param;
}

double RippleOf(const FirOptions& options) {
  if (options.ripple && options.attenuation_db) Fail("--ripple and --attenuation say the same; give one of them");
  if (options.ripple) {
    if (!(*options.ripple > 0 && *options.ripple < 1)) Fail("--ripple: {} is not between 0 and 1", *options.ripple);
    return *options.ripple;
  }
  const double attenuation_db = options.attenuation_db.value_or(kDefaultAttenuationDb);
  if (!(attenuation_db > 0 && attenuation_db <= 300)) {
    Fail("--attenuation: {} dB is not between 0 and 300", attenuation_db);
  }
  return std::pow(10.0, -attenuation_db / 20);
}

// The edges as the library takes them, after the checks.
std::vector<double> EdgesOf(const FirOptions& options, const Type& type, double rate_hz) {
  std::vector<double> edges = options.edges_hz;
  CheckFrequencies("--edges", edges, rate_hz);
  const bool kaiser = options.method == "kaiser";
  if (type.cutoffs == 0) {
    if (kaiser && edges.size() != 1 && edges.size() != 2) {
      Fail("--edges: a {} by kaiser takes 1 frequency, the upper end of its band; {} given", type.name, edges.size());
    }
    if (kaiser && !(edges[0] < rate_hz / 2)) Fail("--edges: the band of a {} ends below half the rate", type.name);
    if (edges.empty()) return {0.0};  // the window method uses none, but wants to see one
    edges.resize(kaiser ? 2 : 1, rate_hz / 2);
    return edges;
  }
  const std::size_t most = 2 * type.cutoffs;
  if (kaiser && edges.size() != most) {
    Fail("--edges: a {} by kaiser takes {} frequencies, the ends of its transition bands; {} given", type.name, most,
         edges.size());
  }
  if (edges.size() != most && edges.size() != type.cutoffs) {
    Fail("--edges: a {} takes {} or {} frequencies; {} given", type.name, type.cutoffs, most, edges.size());
  }
  return edges;
}

void RefuseForeignOptions(const FirOptions& options) {
  if (options.method == "kaiser") {
    if (options.length) Fail("--length goes with --method window; by kaiser the length follows from the edges");
    if (options.window) Fail("--window goes with --method window");
    if (options.param) Fail("--param goes with --method window");
  } else {
    if (options.ripple) Fail("--ripple goes with --method kaiser");
    if (options.attenuation_db) Fail("--attenuation goes with --method kaiser");
    if (options.odd) Fail("--odd goes with --method kaiser");
    if (!options.length) Fail("--length is required with --method window");
  }
  if (!std::isfinite(options.gain)) Fail("--gain: {} is not a gain", options.gain);
}

void DesignByWindow(TapSet& set, Record& record, const FirOptions& options, const Type& type, bool is_double) {
  const std::int32_t length = *options.length;
  if (length < 4 || length > kMostTaps) Fail("--length: {} is not between 4 and {}", length, kMostTaps);
  const std::string name = options.window.value_or("hamming");
  const TSignalWindowType window = WindowFromName(name);
  const double param = WindowParam(window, name, options.param);
  const bool odd_only = type.type == TFilterType::ftHighpass || type.type == TFilterType::ftBandstop ||
                        type.type == TFilterType::ftHilbertIII || type.type == TFilterType::ftDifferentiatorIII;
  if (odd_only && length == kMostTaps)
    Fail("--length: a {} of more than {} taps would be needed", type.name, kMostTaps);
  set.taps.Size(length, false, is_double);
  FirImpulse(set.taps, set.edges_hz, param, type.type, window, options.gain, set.rate_hz);
  if (set.taps.Length() != length) {
    fmt::print(stderr, "passband: note: a {} cannot have {} taps; it has {}\n", type.name, length, set.taps.Length());
  }
  record["window"] = SignalWindowToString(window);
  if (param != 0) record["window_parameter"] = param;
}

void DesignByKaiser(TapSet& set, Record& record, const FirOptions& options, const Type& type, bool is_double) {
  const bool even_only = type.type == TFilterType::ftHilbertIV || type.type == TFilterType::ftDifferentiatorIV;
  if (options.odd && even_only) Fail("--odd: a {} has an even number of taps", type.name);
  const double ripple = RippleOf(options);
  set.taps.Size(0, false, is_double);
  KaiserImpulse(set.taps, set.edges_hz, ripple, type.type, options.gain, set.rate_hz, options.odd);
  if (set.taps.Length() >= kMostTaps) {
    Fail("the filter would need {} taps or more; widen its transition bands or ask for less attenuation", kMostTaps);
  }
  record["ripple"] = ripple;
  record["attenuation_db"] = -20 * std::log10(ripple);
}

}  // namespace

TapSet DesignTaps(const FirOptions& options, double rate_hz, bool is_double) {
  CheckRate(rate_hz);
  const Type& type = TypeFromName(options.type);
  RefuseForeignOptions(options);
  TapSet set;
  set.rate_hz = rate_hz;
  set.edges_hz = EdgesOf(options, type, rate_hz);
  Record record;
  record["kind"] = "fir";
  record["type"] = type.name;
  record["rate_hz"] = rate_hz;
  record["edges_hz"] = options.edges_hz;
  record["method"] = options.method;
  (options.method == "kaiser" ? DesignByKaiser : DesignByWindow)(set, record, options, type, is_double);
  const std::int32_t length = set.taps.Length();
  record["gain"] = options.gain;
  record["precision"] = is_double ? "double" : "single";
  record["length"] = length;
  record["delay_samples"] = (length - 1) / 2.0;
  set.record = record.dump(2);
  set.title = fmt::format("{}, {}, {} taps", type.name, options.method, length);
  return set;
}

}  // namespace passband_cli
