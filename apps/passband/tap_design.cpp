#include "tap_design.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include "failure.h"
#include "fir_methods.h"

namespace passband_cli {
namespace {

// An option and the methods that take it.
struct OptionUse {
  std::string_view name;
  bool (*given)(const FirOptions&);
  std::vector<std::string_view> methods;
};

void RefuseForeignOptions(const FirOptions& options) {
  using Options = const FirOptions&;
  const std::array uses{
      OptionUse{"--type", [](Options o) { return !o.type.empty(); }, {"kaiser", "window", "remez", "fractional"}},
      OptionUse{"--edges",
                [](Options o) { return !o.edges_hz.empty(); },
                {"kaiser", "window", "remez", "fractional", "noise"}},
      OptionUse{"--ripple", [](Options o) { return o.ripple.has_value(); }, {"kaiser", "fractional", "remez"}},
      OptionUse{
          "--attenuation", [](Options o) { return o.attenuation_db.has_value(); }, {"kaiser", "fractional", "remez"}},
      OptionUse{"--odd", [](Options o) { return o.odd; }, {"kaiser", "remez"}},
      OptionUse{"--length", [](Options o) { return o.length.has_value(); }, {"window", "remez", "savgol", "inverse"}},
      OptionUse{"--window", [](Options o) { return o.window.has_value(); }, {"window", "inverse"}},
      OptionUse{"--param", [](Options o) { return o.param.has_value(); }, {"window"}},
      OptionUse{"--weights", [](Options o) { return !o.weights.empty(); }, {"remez"}},
      OptionUse{"--fraction", [](Options o) { return o.fraction.has_value(); }, {"fractional"}},
      OptionUse{"--order", [](Options o) { return o.order.has_value(); }, {"savgol"}},
      OptionUse{"--derivative", [](Options o) { return o.derivative.has_value(); }, {"savgol"}},
      OptionUse{"--amplitude", [](Options o) { return o.amplitude.has_value(); }, {"inverse"}},
      OptionUse{"--invert", [](Options o) { return o.invert; }, {"inverse"}},
      OptionUse{"--slope", [](Options o) { return o.slope_db.has_value(); }, {"noise"}},
  };
  for (const OptionUse& use : uses) {
    if (use.given(options) && std::ranges::find(use.methods, options.method) == use.methods.end()) {
      Fail("{} goes with --method {}, not with {}", use.name, fmt::join(use.methods, ", "), options.method);
    }
  }
  if (!std::isfinite(options.gain)) Fail("--gain: {} is not a gain", options.gain);
}

using Method = void (*)(TapDesign&);

Method MethodFromName(const std::string& name) {
  constexpr std::array<std::pair<std::string_view, Method>, 7> kMethods{{{"kaiser", DesignByKaiser},
                                                                         {"window", DesignByWindow},
                                                                         {"remez", DesignByRemez},
                                                                         {"fractional", DesignFractional},
                                                                         {"savgol", DesignSavGol},
                                                                         {"inverse", DesignInverse},
                                                                         {"noise", DesignNoise}}};
  for (const auto& [known, method] : kMethods) {
    if (known == name) return method;
  }
  Fail("--method: '{}' is not known", name);
}

}  // namespace

TapSet DesignTaps(const FirOptions& options, double rate_hz, bool is_double) {
  CheckRate(rate_hz);
  RefuseForeignOptions(options);
  TapDesign design{options, is_double, {}};
  TapSet& set = design.set;
  set.rate_hz = rate_hz;
  set.taps.Size(0, false, is_double);
  design.record["kind"] = "fir";
  design.record["rate_hz"] = rate_hz;
  design.record["method"] = options.method;
  if (!options.edges_hz.empty()) design.record["edges_hz"] = options.edges_hz;
  MethodFromName(options.method)(design);
  const std::int32_t length = set.taps.Length();
  design.record["gain"] = options.gain;
  design.record["precision"] = is_double ? "double" : "single";
  design.record["length"] = length;
  design.record["delay_samples"] = (length - 1) / 2.0 + (options.fraction ? *options.fraction - 1 : 0.0);
  set.record = design.record.dump(2);
  const std::string type = options.type.empty() ? "" : options.type + ", ";
  set.title = fmt::format("{}{}, {} taps", type, options.method, length);
  return set;
}

}  // namespace passband_cli
