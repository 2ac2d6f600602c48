// The routines that the laws of this folder are checked on. A new routine adds a row to the table of its kind.
#pragma once

#include <cctype>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "passband/passband.h"
#include "tests/test_support.h"

namespace passband::test {

/// A routine whose state is carried from block to block.
class Stream {
 public:
  virtual ~Stream() = default;
  /// Prepares the state; may be called again.
  virtual void Init() = 0;
  virtual void Filter(const TVec& src, TVec& dst) = 0;
  /// The sample form. False when the routine has none.
  virtual bool FilterSample(TCplx, TCplx&) { return false; }
};

struct StreamRow {
  std::string name;
  TMtxFloatPrecision data;  ///< precision of the input
  std::int32_t granule;     ///< block lengths are multiples of it
  double rate;              ///< outputs for each input
  std::int32_t memory;      ///< inputs that a law runs over before a stream counts as warm
  bool in_place;            ///< Src may be Dst
  std::function<std::unique_ptr<Stream>()> make;
  bool refusal_sizes = false;  ///< a refused call has sized Dst already
  bool needs_init = true;      ///< a record that nobody has initialised is refused
  bool one_precision = true;   ///< data of the other precision are refused
};
const std::vector<StreamRow>& StreamRows();

/// A routine that works on a stretch of a vector, in place. What it does to the stretch depends on its length and
/// values only, not on where it lies.
struct RangedRow {
  std::string name;
  std::function<void(TVec&, std::int32_t Index, std::int32_t Len)> call;
};
const std::vector<RangedRow>& RangedRows();

/// Any other call that writes into one vector. `output` is what the vector holds before.
struct CallRow {
  std::string name;
  std::function<TVec()> output;
  std::function<void(TVec&)> call;
};
const std::vector<CallRow>& CallRows();
/// Calls that are refused; they leave the vector as it was.
const std::vector<CallRow>& RefusedRows();

inline void PrintTo(const StreamRow& row, std::ostream* out) { *out << row.name; }
inline void PrintTo(const RangedRow& row, std::ostream* out) { *out << row.name; }
inline void PrintTo(const CallRow& row, std::ostream* out) { *out << row.name; }

/// The name of a row as GoogleTest wants it.
template <class Row>
std::string RowName(const testing::TestParamInfo<Row>& info) {
  std::string name;
  for (const char c : info.param.name) name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
}

}  // namespace passband::test
