// What a primitive reports instead of throwing: 0 for success, a negative number for a failure.
#pragma once

#include <cstdint>
#include <string_view>

namespace passband::primitives {

enum class Status : std::int32_t {
  Ok = 0,
  BadArgument = -5,
  BadSize = -6,
  NullPointer = -8,
  OutOfMemory = -9,
  DivisionByZero = -10,
  BadPhase = -27,
  BadFactor = -28,
};

constexpr bool Failed(Status status) { return static_cast<std::int32_t>(status) < 0; }

/// The status in words, for messages that a person reads.
std::string_view StatusText(Status status);

}  // namespace passband::primitives
