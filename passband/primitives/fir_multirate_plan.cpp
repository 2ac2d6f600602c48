// Which form a multi-rate FIR filter takes, and its tables.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "passband/primitives/fir_multirate_internal.h"

namespace passband::primitives::detail {
namespace {

constexpr std::size_t kMostBankBytes = std::size_t{1} << 24;

constexpr std::int64_t FloorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }
constexpr std::int64_t CeilDivide(std::int64_t a, std::int64_t b) { return -FloorDivide(-a, b); }

template <class T>
constexpr auto kRowElements = static_cast<std::int64_t>(Row<T>::kElements);

template <Element T>
std::int64_t TapCount(const RateChange<T>& rates) {
  return static_cast<std::int64_t>(rates.taps.size());
}

// The inverse of a modulo m >= 1, for a and m without common divisor (extended Euclid).
std::int64_t InverseModulo(std::int64_t a, std::int64_t m) {
  std::int64_t r = m, next_r = a % m, t = 0, next_t = 1;
  while (next_r != 0) {
    const std::int64_t quotient = r / next_r;
    r = std::exchange(next_r, r - quotient * next_r);
    t = std::exchange(next_t, t - quotient * next_t);
  }
  return t < 0 ? t + m : t % m;
}

// How many periods make a cycle: enough to fill its rows, exactly for small factors, where that costs little.
template <Element T>
std::int64_t PeriodsInCycle(std::int64_t up) {
  constexpr std::int64_t kLanes = kRowElements<T>;
  const std::int64_t exact = kLanes / std::gcd(kLanes, up);
  if (up <= 8) return exact;
  for (std::int64_t periods = 1; periods < exact; ++periods) {
    const std::int64_t outputs = periods * up;
    if (10 * outputs >= 9 * kLanes * CeilDivide(outputs, kLanes)) return periods;
  }
  return exact;
}

// Writes one lane of a row; a complex element has two parts.
template <Element T>
void PutLane(T value, std::int64_t lane, Row<T>& row) {
  const auto n = static_cast<std::size_t>(lane);
  if constexpr (IsComplex<T>) {
    row.lanes[2 * n] = value.Re;
    row.lanes[2 * n + 1] = value.Im;
  } else {
    row.lanes[n] = value;
  }
}

template <Element T>
void SetMask(std::int64_t lane, Row<T>& mask) {
  using R = RealOf<T>;
  using Bits = std::conditional_t<std::same_as<R, float>, std::uint32_t, std::uint64_t>;
  const R all = std::bit_cast<R>(std::numeric_limits<Bits>::max());
  if constexpr (IsComplex<T>) {
    PutLane(T(all, all), lane, mask);
  } else {
    PutLane(all, lane, mask);
  }
}

// The inputs that some outputs of a group need, from oldest to newest, and those that all of them need.
struct GroupWindow {
  std::int64_t oldest = std::numeric_limits<std::int64_t>::max();
  std::int64_t newest = std::numeric_limits<std::int64_t>::min();
  std::int64_t common_oldest = std::numeric_limits<std::int64_t>::min();
  std::int64_t common_newest = std::numeric_limits<std::int64_t>::max();

  void Include(std::int64_t first, std::int64_t last) {
    common_oldest = std::max(common_oldest, first);
    common_newest = std::min(common_newest, last);
    if (first > last) return;
    oldest = std::min(oldest, first);
    newest = std::max(newest, last);
  }
};

// The steps of a group; those from full_begin to full_end (exclusive) need no mask.
struct GroupSteps {
  std::size_t count = 0;
  std::size_t full_begin = 0;
  std::size_t full_end = 0;

  explicit GroupSteps(const GroupWindow& window) {
    if (window.oldest > window.newest) return;
    count = RoundUp(window.newest - window.oldest + 1);
    if (window.common_oldest > window.common_newest) return;
    const std::size_t begin = RoundUp(window.common_oldest - window.oldest);
    const std::size_t end = static_cast<std::size_t>(window.common_newest + 1 - window.oldest) / kChains * kChains;
    if (begin >= end) return;
    full_begin = begin;
    full_end = end;
  }

  bool IsFull(std::size_t step) const { return step >= full_begin && step < full_end; }
  std::size_t MaskedCount() const { return count - (full_end - full_begin); }
  std::size_t MaskedIndex(std::size_t step) const { return step < full_begin ? step : step - (full_end - full_begin); }

 private:
  static std::size_t RoundUp(std::int64_t steps) {
    return (static_cast<std::size_t>(steps) + kChains - 1) / kChains * kChains;
  }
};

void AddSegments(const GroupSteps& steps, std::vector<BankSegment>& segments) {
  for (std::size_t begin = 0; begin < steps.count; begin += kSegmentSteps) {
    const std::size_t end = std::min(steps.count, begin + kSegmentSteps);
    const std::size_t full_from = std::clamp(steps.full_begin, begin, end);
    const std::size_t full_to = std::clamp(steps.full_end, full_from, end);
    segments.push_back({full_from - begin, full_to - full_from, end - full_to});
  }
}

// Adds the group of `lanes` outputs of the cycle from `first_output` on.
template <Element T>
void AddGroup(const RateChange<T>& rates, std::int64_t first_output, std::int64_t lanes, BankTables<T>& bank) {
  GroupWindow window;
  for (std::int64_t lane = 0; lane < lanes; ++lane) {
    const std::int64_t position = rates.Position(first_output + lane);
    window.Include(rates.OldestInput(position), rates.NewestInput(position));
  }
  const GroupSteps steps(window);
  BankGroup group;
  group.first_input = steps.count > 0 ? window.oldest : 0;
  group.lanes = static_cast<std::size_t>(lanes);
  group.steps = steps.count;
  group.tap_row = bank.taps.size();
  group.mask_row = bank.masks.size();
  group.first_segment = bank.segments.size();
  AddSegments(steps, bank.segments);
  group.last_segment = bank.segments.size();
  bank.groups.push_back(group);
  bank.taps.resize(group.tap_row + steps.count * kParts<T>);
  bank.masks.resize(group.mask_row + steps.MaskedCount());
  for (std::int64_t lane = 0; lane < lanes; ++lane) {
    const std::int64_t position = rates.Position(first_output + lane);
    const std::int64_t newest = rates.NewestInput(position);
    for (std::int64_t input = rates.OldestInput(position); input <= newest; ++input) {
      const auto step = static_cast<std::size_t>(input - window.oldest);
      const T tap = rates.taps[static_cast<std::size_t>(position - input * rates.up)];
      Row<T>* const row = &bank.taps[group.tap_row + step * kParts<T>];
      PutLane(tap, lane, row[0]);
      if constexpr (IsComplex<T>) PutLane(T(-tap.Im, tap.Re), lane, row[1]);
      if (!steps.IsFull(step)) SetMask(lane, bank.masks[group.mask_row + steps.MaskedIndex(step)]);
    }
  }
}

// The taps of one phase, the newest input's at the end of the window.
template <Element T>
void PutPhase(const RateChange<T>& rates, std::int64_t phase, std::int64_t window, Row<T>* rows) {
  for (std::int64_t k = phase, place = window - 1; k < TapCount(rates); k += rates.up, --place) {
    Row<T>* const row = rows + static_cast<std::size_t>(place / kRowElements<T>) * kParts<T>;
    const std::int64_t lane = place % kRowElements<T>;
    const T tap = rates.taps[static_cast<std::size_t>(k)];
    if constexpr (IsComplex<T>) {
      PutLane(T(tap.Re, -tap.Im), lane, row[0]);
      PutLane(T(tap.Im, tap.Re), lane, row[1]);
    } else {
      PutLane(tap, lane, row[0]);
    }
  }
}

}  // namespace

template <Element T>
std::int64_t RateChange<T>::NewestInput(std::int64_t position) const {
  return FloorDivide(position, up);
}

template <Element T>
std::int64_t RateChange<T>::OldestInput(std::int64_t position) const {
  return FloorDivide(position - TapCount(*this), up) + 1;
}

// Output j keeps the high-rate sample j down + down_phase and tap k meets the input at i up + up_phase, so that
// j down + down_phase - up_phase = k + i up: modulo the common divisor the tap number is the same for all outputs.
template <Element T>
RateChange<T> ReduceRateChange(const T* taps, std::int32_t count, std::int32_t up, std::int32_t up_phase,
                               std::int32_t down, std::int32_t down_phase) {
  RateChange<T> rates;
  rates.divisor = std::gcd(up, down);
  rates.up = up / rates.divisor;
  rates.down = down / rates.divisor;
  const std::int64_t shift = std::int64_t{down_phase} - up_phase;
  rates.offset = FloorDivide(shift, rates.divisor);
  const std::int64_t first_tap = shift - rates.offset * rates.divisor;
  if (first_tap < count) rates.taps.reserve(static_cast<std::size_t>(CeilDivide(count - first_tap, rates.divisor)));
  for (std::int64_t k = first_tap; k < count; k += rates.divisor) rates.taps.push_back(taps[k]);
  return rates;
}

template <Element T>
bool BankIsBetter(const RateChange<T>& rates) {
  const auto taps = static_cast<double>(TapCount(rates));
  const auto up = static_cast<double>(rates.up);
  constexpr auto kLanes = static_cast<double>(Row<T>::kElements);
  if (up > 4 * taps) return false;  // phases without taps only cost memory
  const double per_phase = taps / up;
  const double steps = per_phase + (kLanes - 1) * static_cast<double>(rates.down) / up + 1;
  const auto periods = static_cast<double>(PeriodsInCycle<T>(rates.up));
  const double rows = std::ceil(periods * up / kLanes) * (steps + kChains - 1) * (kParts<T> + 1);
  if (rows * static_cast<double>(sizeof(Row<T>)) > static_cast<double>(kMostBankBytes)) return false;
  // Measured: a step costs about 0.6 of a chunk, and adding up a row as much as 8 chunks.
  const double bank_cost = kParts<T> * steps / kLanes;
  const double dots_cost = (8 + kParts<T> * std::ceil(per_phase / kLanes)) * std::min(1.0, per_phase);
  return 0.6 * bank_cost < dots_cost;
}

template <Element T>
BankTables<T> MakeBank(const RateChange<T>& rates) {
  BankTables<T> bank;
  bank.periods = PeriodsInCycle<T>(rates.up);
  bank.inputs = bank.periods * rates.down;
  bank.outputs = bank.periods * rates.up;
  for (std::int64_t first = 0; first < bank.outputs; first += kRowElements<T>) {
    AddGroup(rates, first, std::min(kRowElements<T>, bank.outputs - first), bank);
  }
  bank.taps.shrink_to_fit();
  bank.masks.shrink_to_fit();
  return bank;
}

template <Element T>
DotsTables<T> MakeDots(const RateChange<T>& rates) {
  DotsTables<T> dots;
  const std::int64_t count = TapCount(rates);
  const std::int64_t longest = CeilDivide(count, rates.up);  // the phases have so many taps, or one less
  dots.chunks = static_cast<std::size_t>(CeilDivide(longest, kRowElements<T>));
  const std::int64_t window = static_cast<std::int64_t>(dots.chunks) * kRowElements<T>;
  for (std::int64_t less = 0; less < 2; ++less) {
    Row<T>& mask = dots.masks[static_cast<std::size_t>(less)];
    for (std::int64_t lane = window - longest + less; lane < kRowElements<T>; ++lane) SetMask(lane, mask);
  }
  const std::int64_t phases = std::min(rates.up, count);  // that have taps
  const std::size_t rows = dots.chunks * kParts<T>;
  dots.jobs.reserve(static_cast<std::size_t>(phases));
  dots.taps.resize(static_cast<std::size_t>(phases) * rows);
  // Output r of a period has phase (r down + offset) mod up.
  const std::int64_t inverse = InverseModulo(rates.down, rates.up);
  const std::int64_t offset = rates.offset - FloorDivide(rates.offset, rates.up) * rates.up;
  for (std::int64_t phase = 0; phase < phases; ++phase) {
    DotsJob job;
    job.output = (phase - offset + rates.up) % rates.up * inverse % rates.up;
    job.newest = rates.NewestInput(rates.Position(job.output));
    job.tap_row = static_cast<std::size_t>(phase) * rows;
    job.mask = CeilDivide(count - phase, rates.up) == longest ? 0 : 1;
    PutPhase(rates, phase, window, &dots.taps[job.tap_row]);
    dots.jobs.push_back(job);
  }
  std::ranges::sort(dots.jobs, {}, &DotsJob::output);
  return dots;
}

template RateChange<float> ReduceRateChange(const float*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                            std::int32_t);
template RateChange<double> ReduceRateChange(const double*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                             std::int32_t);
template RateChange<TSCplx> ReduceRateChange(const TSCplx*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                             std::int32_t);
template RateChange<TCplx> ReduceRateChange(const TCplx*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                            std::int32_t);
template bool BankIsBetter(const RateChange<float>&);
template bool BankIsBetter(const RateChange<double>&);
template bool BankIsBetter(const RateChange<TSCplx>&);
template bool BankIsBetter(const RateChange<TCplx>&);
template BankTables<float> MakeBank(const RateChange<float>&);
template BankTables<double> MakeBank(const RateChange<double>&);
template BankTables<TSCplx> MakeBank(const RateChange<TSCplx>&);
template BankTables<TCplx> MakeBank(const RateChange<TCplx>&);
template DotsTables<float> MakeDots(const RateChange<float>&);
template DotsTables<double> MakeDots(const RateChange<double>&);
template DotsTables<TSCplx> MakeDots(const RateChange<TSCplx>&);
template DotsTables<TCplx> MakeDots(const RateChange<TCplx>&);

}  // namespace passband::primitives::detail
