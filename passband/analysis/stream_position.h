// Where a generator stands in its stream.
#pragma once

#include <cstdint>

namespace passband::SignalUtils {

/// What a generator remembers beside the phase in its record: from which phase its stream started, and how long ago. Phases
/// are computed from there, so that they do not collect the rounding errors of the blocks. It counts as long as the
/// record's frequency and phase are those that the generator left; a stream starts anew when the owner sets one of them.
struct TStreamPosition {
  double Start = 0;         ///< phase of the first sample
  std::int64_t Count = -1;  ///< samples since then; -1: no stream yet
  double Freq = 0;          ///< as the generator left it in the record
  double Phase = 0;         ///< as the generator left it in the record
};

}  // namespace passband::SignalUtils
