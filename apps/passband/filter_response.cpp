#include "filter_response.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "decibels.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

constexpr double kPi = std::numbers::pi;

TVec Doubles(const TVec& values, std::int32_t index, std::int32_t count) {
  TVec result;
  result.Size(count, false, true);
  for (std::int32_t n = 0; n < count; ++n) result.SetDefault(n, values[index + n]);
  return result;
}

// The value at 1 / z of a polynomial in 1 / z.
TCplx ValueAt(const TVec& coefficients, TCplx turn) {
  TCplx sum;
  for (std::int32_t n = coefficients.Length(); n-- > 0;) sum = CAdd(CMul(sum, turn), Cplx(coefficients[n]));
  return sum;
}

// Makes a phase continuous by whole turns; the response is dense enough for the nearest one to be the right one.
void Unwrap(std::vector<double>& radians) {
  for (std::size_t k = 1; k < radians.size(); ++k) {
    radians[k] -= 2 * kPi * std::round((radians[k] - radians[k - 1]) / (2 * kPi));
  }
}

}  // namespace

FilterResponse::FilterResponse(const TapSet& set) : rate_hz_(set.rate_hz) {
  parts_.push_back({Doubles(set.taps, 0, set.taps.Length()), {}});
}

FilterResponse::FilterResponse(const SectionSet& set, double rate_hz) : rate_hz_(rate_hz) {
  for (std::int32_t n = 0; n < set.sections.Length(); n += 6) {
    parts_.push_back({Doubles(set.sections, n, 3), Doubles(set.sections, n + 3, 3)});
  }
}

ResponseTable FilterResponse::Table(std::int32_t intervals) const {
  constexpr std::int32_t kPointsPerTap = 8;
  std::int32_t padding = 1;
  std::size_t count = 0;
  ResponseTable table;
  for (const Part& part : parts_) {
    const std::int32_t length = part.numerator.Length();
    const TVec* denominator = part.denominator.Length() == 0 ? nullptr : &part.denominator;
    padding = std::max(kPointsPerTap, (2 * intervals + length - 1) / length);
    TVec response;
    TVec delay;
    FrequencyResponse(part.numerator, denominator, response, padding);
    GroupDelay(delay, part.numerator, denominator, padding);
    const auto values = response.CValues();
    count = values.size();
    table.decibels.resize(count);
    table.degrees.resize(count);
    table.delay_s.resize(count);
    std::vector<double> radians(count);
    for (std::size_t k = 0; k < count; ++k) {
      table.decibels[k] += Decibels(CAbs(values[k]));
      radians[k] = std::atan2(values[k].Im, values[k].Re);
      table.delay_s[k] += delay[static_cast<std::int32_t>(k)] / rate_hz_;
    }
    Unwrap(radians);
    for (std::size_t k = 0; k < count; ++k) table.degrees[k] += radians[k] * 180 / kPi;
  }
  for (std::size_t k = 0; k < count; ++k) {
    table.hz.push_back(rate_hz_ / 2 * static_cast<double>(k) / static_cast<double>(count - 1));
  }
  return table;
}

double FilterResponse::DecibelsAt(double hz) const {
  const TCplx turn = Expj(-2 * kPi * hz / rate_hz_);
  double decibels = 0;
  for (const Part& part : parts_) {
    decibels += Decibels(CAbs(ValueAt(part.numerator, turn)));
    if (part.denominator.Length() > 0) decibels -= Decibels(CAbs(ValueAt(part.denominator, turn)));
  }
  return decibels;
}

}  // namespace passband_cli
