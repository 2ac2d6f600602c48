// Plain memory that a state record owns.
#pragma once

#include <cstdint>
#include <vector>

namespace passband {

using TByteArray = std::vector<std::uint8_t>;

}  // namespace passband
