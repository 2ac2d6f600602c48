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
    return all;
  }();
  return rows;
}

}  // namespace passband::test
