#include "fir_type.h"

#include <array>
#include <cctype>
#include <cmath>

#include "failure.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

constexpr double kDefaultAttenuationDb = 60;

constexpr std::array kTypes{
    FirType{"lowpass", TFilterType::ftLowpass, 1, false},
    FirType{"highpass", TFilterType::ftHighpass, 1, false},
    FirType{"bandpass", TFilterType::ftBandpass, 2, false},
    FirType{"bandstop", TFilterType::ftBandstop, 2, false},
    FirType{"hilbert3", TFilterType::ftHilbertIII, 0, false},
    FirType{"hilbert4", TFilterType::ftHilbertIV, 0, false},
    FirType{"differentiator3", TFilterType::ftDifferentiatorIII, 0, false},
    FirType{"differentiator4", TFilterType::ftDifferentiatorIV, 0, false},
    FirType{"integrator3", TFilterType::ftIntegratorIII, 0, true},
    FirType{"integrator4", TFilterType::ftIntegratorIV, 0, true},
    FirType{"double-differentiator3", TFilterType::ftDoubleDifferentiatorIII, 0, true},
    FirType{"double-differentiator4", TFilterType::ftDoubleDifferentiatorIV, 0, true},
    FirType{"double-integrator3", TFilterType::ftDoubleIntegratorIII, 0, true},
    FirType{"double-integrator4", TFilterType::ftDoubleIntegratorIV, 0, true},
};

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

}  // namespace

const FirType& FirTypeFromName(const std::string& name) {
  std::string names;
  for (const FirType& type : kTypes) {
    if (type.name == name) return type;
    names += fmt::format("{}{}", names.empty() ? "" : ", ", type.name);
  }
  if (name.empty()) Fail("--type is required: {}", names);
  Fail("--type: '{}' is none of {}", name, names);
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

bool OddOnly(const FirType& type) {
  using enum TFilterType;
  return type.type == ftHighpass || type.type == ftBandstop || (type.cutoffs == 0 && !EvenOnly(type));
}

bool EvenOnly(const FirType& type) { return type.cutoffs == 0 && type.name.ends_with('4'); }

}  // namespace passband_cli
