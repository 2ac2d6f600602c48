// The streams of the multi-rate FIR filter: which inputs meet which tables, whatever the calls look like.
#include <algorithm>
#include <vector>

#include "passband/primitives/fir_multirate_internal.h"
#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives {
namespace {

using namespace detail;

// Inputs stand in one line: the past, then the cycles from the one on whose outputs are not complete yet. A group at
// the end of a call may reach past the samples that are there; its lanes that would need them are not handed out, and
// the next call computes the group again.
template <Element T>
class BankFir final : public FirStateOf<T> {
 public:
  explicit BankFir(const RateChange<T>& rates)
      : up_(rates.up), down_(rates.down), divisor_(rates.divisor), bank_(MakeBank(rates)) {
    std::int64_t reach = bank_.inputs;
    for (const BankGroup& group : bank_.groups) {
      past_ = std::max(past_, -group.first_input);
      reach = std::max(reach, group.first_input + static_cast<std::int64_t>(group.steps));
    }
    const std::int64_t room = std::max({kLeastCycles * bank_.inputs, kLeastRoom, past_});
    room_ = room / down_;
    line_.resize(static_cast<std::size_t>(past_ + room + reach));
  }

  void Filter(const T* src, T* dst, std::int32_t count) noexcept override {
    for (std::int64_t periods = count * divisor_; periods > 0;) {
      if (periods > room_ - held_) DropCompleteCycles();
      std::int64_t now = std::min(periods, room_ - held_);
      if (now < periods && now >= bank_.periods) now -= (held_ + now) % bank_.periods;
      std::copy_n(src, now * down_, line_.data() + past_ + held_ * down_);
      Produce(held_ * up_, (held_ + now) * up_, dst);
      held_ += now;
      periods -= now;
      src += now * down_;
      dst += now * up_;
    }
  }

  T One(T) noexcept override { return T{}; }

 private:
  static constexpr std::int64_t kLeastCycles = 8;   // several of them share the taps they load
  static constexpr std::int64_t kLeastRoom = 4096;  // inputs between two moves of the line
  static constexpr auto kLanes = static_cast<std::int64_t>(Row<T>::kElements);

  void DropCompleteCycles() noexcept {
    const std::int64_t dropped = held_ / bank_.periods * bank_.periods;
    if (dropped == 0) return;
    held_ -= dropped;
    std::copy_n(line_.data() + dropped * down_, past_ + held_ * down_, line_.data());
  }

  // The outputs from `begin` to `end`, counted like the cycles in the line.
  void Produce(std::int64_t begin, std::int64_t end, T* dst) noexcept {
    std::int64_t cycle = begin / bank_.outputs;
    if (begin % bank_.outputs != 0) {
      const std::int64_t stop = std::min(end, (cycle + 1) * bank_.outputs);
      ProducePartOfCycle(cycle, begin, stop, dst);
      dst += stop - begin;
      if (stop == end) return;
      ++cycle;
    }
    const std::int64_t whole = end / bank_.outputs - cycle;
    if (whole > 0) {
      T* to = dst;
      for (const BankGroup& group : bank_.groups) {
        kernels_.bank(bank_, group, Cycle(cycle), to, static_cast<std::size_t>(whole));
        to += group.lanes;
      }
    }
    cycle += whole;
    if (cycle * bank_.outputs < end) ProducePartOfCycle(cycle, cycle * bank_.outputs, end, dst + whole * bank_.outputs);
  }

  void ProducePartOfCycle(std::int64_t cycle, std::int64_t begin, std::int64_t end, T* dst) noexcept {
    const std::int64_t start = cycle * bank_.outputs;
    for (std::int64_t g = (begin - start) / kLanes; start + g * kLanes < end; ++g) {
      const BankGroup& group = bank_.groups[static_cast<std::size_t>(g)];
      const std::int64_t first = start + g * kLanes;
      const std::int64_t from = std::max(begin, first);
      const std::int64_t to = std::min(end, first + static_cast<std::int64_t>(group.lanes));
      if (to - from == static_cast<std::int64_t>(group.lanes)) {
        kernels_.bank(bank_, group, Cycle(cycle), dst, 1);
      } else {
        T lanes[Row<T>::kElements];
        kernels_.bank(bank_, group, Cycle(cycle), lanes, 1);
        std::copy_n(lanes + (from - first), to - from, dst);
      }
      dst += to - from;
    }
  }

  const T* Cycle(std::int64_t cycle) const { return line_.data() + past_ + cycle * bank_.inputs; }

  const MultiRateKernels<T>& kernels_ = ChooseMultiRateKernels<T>();
  std::int64_t up_;
  std::int64_t down_;
  std::int64_t divisor_;
  BankTables<T> bank_;
  std::int64_t past_ = 0;  // inputs before the first cycle in the line
  std::int64_t room_ = 0;  // periods that the line can hold
  std::int64_t held_ = 0;  // periods in the line
  std::vector<T> line_;
};

// Windows lie in the caller's samples; those that begin before them lie in the seam: the last inputs of the past, then
// the first ones of the call.
template <Element T>
class DotsFir final : public FirStateOf<T> {
 public:
  explicit DotsFir(const RateChange<T>& rates)
      : up_(rates.up),
        down_(rates.down),
        divisor_(rates.divisor),
        dots_(MakeDots(rates)),
        window_(static_cast<std::int64_t>(dots_.chunks * Row<T>::kElements)),
        seam_(2 * dots_.chunks * Row<T>::kElements) {}

  void Filter(const T* src, T* dst, std::int32_t count) noexcept override {
    if (count == 0) return;
    const std::int64_t periods = count * divisor_;
    const std::int64_t inputs = periods * down_;
    std::copy_n(src, std::min(inputs, window_), seam_.data() + window_);
    if (static_cast<std::int64_t>(dots_.jobs.size()) < up_) std::fill_n(dst, periods * up_, T{});
    RunJobs(src, dst, periods);
    if (inputs >= window_) {
      std::copy_n(src + (inputs - window_), window_, seam_.data());
    } else {
      std::copy_n(seam_.data() + inputs, window_, seam_.data());
    }
  }

  T One(T) noexcept override { return T{}; }

 private:
  void RunJobs(const T* src, T* dst, std::int64_t periods) noexcept {
    DotsBatch<T> batch;
    std::size_t filled = 0;
    for (std::int64_t period = 0; period < periods; ++period) {
      for (const DotsJob& job : dots_.jobs) {
        const std::int64_t begin = period * down_ + job.newest + 1 - window_;
        batch.x[filled] = begin < 0 ? seam_.data() + (window_ + begin) : src + begin;
        batch.taps[filled] = dots_.taps.data() + job.tap_row;
        batch.mask[filled] = &dots_.masks[job.mask];
        batch.y[filled] = dst + period * up_ + job.output;
        if (++filled < kDotsBatch) continue;
        kernels_.dots(batch, dots_.chunks);
        filled = 0;
      }
    }
    if (filled == 0) return;
    const auto repeat_last = [filled](auto& of) { std::fill(of.begin() + filled, of.end(), of[filled - 1]); };
    repeat_last(batch.x);
    repeat_last(batch.taps);
    repeat_last(batch.mask);
    repeat_last(batch.y);
    kernels_.dots(batch, dots_.chunks);
  }

  const MultiRateKernels<T>& kernels_ = ChooseMultiRateKernels<T>();
  std::int64_t up_;
  std::int64_t down_;
  std::int64_t divisor_;
  DotsTables<T> dots_;
  std::int64_t window_;
  std::vector<T> seam_;
};

}  // namespace

template <Element T>
FirState* NewMultiRateFir(const T* taps, std::int32_t count, std::int32_t up, std::int32_t up_phase, std::int32_t down,
                          std::int32_t down_phase) {
  const RateChange<T> rates = ReduceRateChange(taps, count, up, up_phase, down, down_phase);
  if (BankIsBetter(rates)) return new BankFir<T>(rates);
  return new DotsFir<T>(rates);
}

template FirState* NewMultiRateFir(const float*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);
template FirState* NewMultiRateFir(const double*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);
template FirState* NewMultiRateFir(const TSCplx*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);
template FirState* NewMultiRateFir(const TCplx*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);

}  // namespace passband::primitives
