#include <utility>

#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

using namespace SignalUtils;
using enum TMtxFloatPrecision;

struct FirKind {
  std::int32_t taps;
  std::int32_t up = 1;
  std::int32_t up_phase = 0;
  std::int32_t down = 1;
  std::int32_t down_phase = 0;
};

class FirStream : public Stream {
 public:
  FirStream(TVec taps, FirKind kind) : taps_(std::move(taps)), kind_(kind) {}

  void Init() override { FirInit(taps_, state_, kind_.up, kind_.up_phase, kind_.down, kind_.down_phase); }
  void Filter(const TVec& src, TVec& dst) override { FirFilter(src, dst, state_); }
  bool FilterSample(TCplx x, TCplx& y) override {
    if (kind_.up != 1 || kind_.down != 1) return false;
    if (complex_) {
      FirFilter(x, y, state_);
    } else {
      double re = 0;
      FirFilter(x.Re, re, state_);
      y = {re, 0};
    }
    return true;
  }
  FirStream& OnComplexData(bool complex) {
    complex_ = complex;
    return *this;
  }

 private:
  TVec taps_;
  FirKind kind_;
  TFirState state_{};
  bool complex_ = false;
};

StreamRow FirRow(TMtxFloatPrecision data, TMtxFloatPrecision taps, FirKind kind) {
  StreamRow row;
  row.name = "Fir " + Name(data) + " by " + Name(taps) + " " + std::to_string(kind.taps) + " taps " +
             std::to_string(kind.up) + " to " + std::to_string(kind.down);
  row.data = data;
  row.granule = kind.down;
  row.rate = static_cast<double>(kind.up) / kind.down;
  row.memory = kind.taps;
  row.in_place = true;
  row.make = [=] {
    auto stream = std::make_unique<FirStream>(Noise(kind.taps, taps, 7), kind);
    stream->OnComplexData(IsComplexPrecision(data) || IsComplexPrecision(taps));
    return stream;
  };
  return row;
}

struct IirKind {
  bool sections;
  std::int32_t count;  // sections, or the order
  bool in_place = false;
};

// Poles near the middle of the upper half of the unit disc, zeros anywhere.
TVec IirTaps(IirKind kind, bool is_double) {
  TVec taps;
  const auto put = [&](std::int32_t at, double value) { Put(taps, at, {value, 0}); };
  if (kind.sections) {
    taps = Noise(6 * kind.count, MakePrecision(false, is_double), 21);
    for (std::int32_t k = 0; k < kind.count; ++k) {
      put(6 * k + 3, 2);
      put(6 * k + 4, -2.0 * (k + 1) / (kind.count + 1));
      put(6 * k + 5, 1.2 + 0.4 * k / kind.count);
    }
  } else {
    taps = Noise(2 * kind.count + 2, MakePrecision(false, is_double), 22);
    put(kind.count + 1, 2);
    for (std::int32_t k = 1; k <= kind.count; ++k) {
      put(kind.count + 1 + k, At(taps, kind.count + 1 + k).Re * (k == 1 ? 1.0 : 0.8 / kind.count));
    }
  }
  return taps;
}

class IirStream : public Stream {
 public:
  IirStream(IirKind kind, TMtxFloatPrecision data)
      : kind_(kind), data_(data), taps_(IirTaps(kind, IsDoublePrecision(data))) {}

  void Init() override {
    if (kind_.sections) {
      IirInitBQ(taps_, state_, IsComplexPrecision(data_));
    } else {
      IirInit(taps_, state_, IsComplexPrecision(data_));
    }
  }
  void Filter(const TVec& src, TVec& dst) override {
    if (!kind_.in_place) return IirFilter(src, dst, state_);
    work_.Copy(src);
    dst.Size(src);
    IirFilter(work_, state_);
    dst.Copy(work_);
  }
  bool FilterSample(TCplx x, TCplx& y) override {
    switch (data_) {
      case SingleReal:
        y = {static_cast<double>(Sample(static_cast<float>(x.Re))), 0};
        break;
      case DoubleReal:
        y = {Sample(x.Re), 0};
        break;
      case SingleComplex:
        y = static_cast<TCplx>(Sample(static_cast<TSCplx>(x)));
        break;
      case DoubleComplex:
        y = Sample(x);
    }
    return true;
  }

 private:
  template <Element T>
  T Sample(T x) {
    T y{};
    IirFilter(x, y, state_);
    return y;
  }

  IirKind kind_;
  TMtxFloatPrecision data_;
  TVec taps_;
  TVec work_;
  TIirState state_{};
};

StreamRow IirRow(TMtxFloatPrecision data, IirKind kind) {
  StreamRow row;
  row.name = "Iir " + Name(data) + " " + std::to_string(kind.count) + (kind.sections ? " sections" : " order") +
             (kind.in_place ? " in place" : "");
  row.data = data;
  row.granule = 1;
  row.rate = 1;
  row.memory = 2 * kind.count;
  row.in_place = true;
  row.refusal_sizes = true;
  row.make = [=] { return std::make_unique<IirStream>(kind, data); };
  return row;
}

// A routine whose record is all that it needs; `init` fills it.
template <class State>
class RecordStream : public Stream {
 public:
  using Init_ = std::function<void(State&)>;
  using Filter_ = std::function<void(const TVec&, TVec&, State&)>;
  RecordStream(Init_ init, Filter_ filter) : init_(std::move(init)), filter_(std::move(filter)) {}

  void Init() override { init_(state_); }
  void Filter(const TVec& src, TVec& dst) override { filter_(src, dst, state_); }

 private:
  Init_ init_;
  Filter_ filter_;
  State state_{};
};

template <class State>
StreamRow RecordRow(const std::string& name, TMtxFloatPrecision data, std::int32_t memory,
                    typename RecordStream<State>::Init_ init, typename RecordStream<State>::Filter_ filter) {
  StreamRow row;
  row.name = name + " " + Name(data);
  row.data = data;
  row.granule = 1;
  row.rate = 1;
  row.memory = memory;
  row.in_place = true;
  row.make = [=] { return std::make_unique<RecordStream<State>>(init, filter); };
  return row;
}

void AddMedianAndDelay(std::vector<StreamRow>& rows, TMtxFloatPrecision data) {
  using Median = void (*)(const TVec&, TVec&, const TMedianState&);
  for (const std::int32_t mask : {1, 5, 31, 255, 700}) {
    if (IsComplexPrecision(data)) break;
    rows.push_back(RecordRow<TMedianState>(
        "Median " + std::to_string(mask), data, mask, [=](TMedianState& state) { MedianInit(mask, state, data); },
        static_cast<Median>(MedianFilter)));
  }
  for (const std::int32_t delay : {0, 3, 700}) {
    StreamRow row = RecordRow<TDelayFilterState>(
        "Delay " + std::to_string(delay), data, delay, [=](TDelayFilterState& state) { DelayInit(delay, state, data); },
        DelayFilter);
    row.needs_init = false;  // without a delay there is nothing to prepare
    rows.push_back(row);
  }
}

// Filters whose record needs no Init and takes data of either precision; those that work in place are run on a copy.
void AddSimpleFilters(std::vector<StreamRow>& rows, TMtxFloatPrecision data) {
  const std::size_t first = rows.size();
  const bool complex = IsComplexPrecision(data);
  const auto add = [&]<class State>(const char* name, State, auto filter) {
    rows.push_back(RecordRow<State>(
        name, data, 2, [](State& state) { state = {}; }, filter));
  };
  add("Differentiate", TDiffState{}, [](const TVec& x, TVec& y, TDiffState& s) { Differentiate(x, y, s, 0.1); });
  add("Integrate", TIntegrateState{}, [](const TVec& x, TVec& y, TIntegrateState& s) { Integrate(x, y, s, 0.1); });
  add("SampleAndHold", TSampleAndHoldState{}, [](const TVec& x, TVec& y, TSampleAndHoldState& s) {
    y.Copy(x);
    SampleAndHoldFilter(y, s, 5);
  });
  add("SampleAndDecay", TSampleAndHoldState{}, [](const TVec& x, TVec& y, TSampleAndHoldState& s) {
    y.Copy(x);
    SampleAndDecayFilter(y, s, 0.99);
  });
  if (complex) {
    add("ExpAverage", TCplx{}, [](const TVec& x, TVec& y, TCplx& s) {
      y.Copy(x);
      ExpAverageFilter(y, s, 3);
    });
  } else {
    add("ExpAverage", 0.0, [](const TVec& x, TVec& y, double& s) {
      y.Copy(x);
      ExpAverageFilter(y, s, 3);
    });
  }
  for (std::size_t k = first; k < rows.size(); ++k) {
    rows[k].needs_init = false;
    rows[k].one_precision = false;
  }
}

}  // namespace

const std::vector<StreamRow>& StreamRows() {
  static const std::vector<StreamRow> rows = [] {
    std::vector<StreamRow> all;
    const std::pair<TMtxFloatPrecision, TMtxFloatPrecision> kinds[] = {
        {SingleReal, SingleReal},       {DoubleReal, DoubleReal},       {SingleComplex, SingleReal},
        {DoubleComplex, DoubleReal},    {SingleReal, SingleComplex},    {DoubleReal, DoubleComplex},
        {SingleComplex, SingleComplex}, {DoubleComplex, DoubleComplex},
    };
    for (const auto& [data, taps] : kinds) {
      for (const std::int32_t count : {1, 7, 8, 33, 300, 2500}) all.push_back(FirRow(data, taps, {count}));
      all.push_back(FirRow(data, taps, {33, 3, 2, 2, 1}));
      all.push_back(FirRow(data, taps, {40, 1, 0, 8, 3}));
      all.push_back(FirRow(data, taps, {40, 8, 5, 1, 0}));
    }
    for (const TMtxFloatPrecision data : kPrecisions) {
      for (const std::int32_t order : {0, 1, 3, 4, 9, 25}) all.push_back(IirRow(data, {false, order}));
      for (const std::int32_t sections : {1, 2, 3, 4, 9, 25}) all.push_back(IirRow(data, {true, sections}));
      for (const bool sections : {false, true}) all.push_back(IirRow(data, {sections, 4, true}));
      AddMedianAndDelay(all, data);
      AddSimpleFilters(all, data);
    }
    return all;
  }();
  return rows;
}

}  // namespace passband::test
