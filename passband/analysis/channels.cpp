#include "passband/analysis/channels.h"

#include <limits>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// What passes has at least one channel.
void CheckChannel(std::int32_t count, std::int32_t number) {
  if (number > std::int64_t{count} - 1) throw Exception("ChannelNumber > ChannelCount-1");
  if (number < 0) ERaise("ChannelNumber < 0");
}

}  // namespace

void Multiplex(const TVec& Src, TVec& Dst, std::int32_t ChannelCount, std::int32_t ChannelNumber) {
  CheckChannel(ChannelCount, ChannelNumber);
  const std::int64_t length = std::int64_t{Src.Length()} * ChannelCount;
  if (length > std::numeric_limits<std::int32_t>::max()) ERaise("Size: more than 2147483647 elements");
  if (Dst.Length() == length && Dst.FloatPrecision() == Src.FloatPrecision()) {
    return Dst.Scatter(Src, ChannelCount, ChannelNumber < length ? ChannelNumber : 0, Src.Length());
  }
  const Borrowed<TVec> channels;
  channels->Size(static_cast<std::int32_t>(length), Src);
  channels->SetZero();
  channels->Scatter(Src, ChannelCount, ChannelNumber < length ? ChannelNumber : 0, Src.Length());
  Dst.Take(*channels);
}

void Demultiplex(const TVec& Src, TVec& Dst, std::int32_t ChannelCount, std::int32_t ChannelNumber) {
  CheckChannel(ChannelCount, ChannelNumber);
  Dst.DownSample(Src, ChannelCount, ChannelNumber);
}

}  // namespace passband::SignalUtils
