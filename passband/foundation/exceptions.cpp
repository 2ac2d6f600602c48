#include "passband/foundation/exceptions.h"

namespace passband {

// Defined here so that the type information of each class lives in the shared library and a handler in another module
// recognises it.
Exception::~Exception() = default;
ECoreError::~ECoreError() = default;
ELatticaInvalidArgument::~ELatticaInvalidArgument() = default;

void ERaise(std::string_view text) { throw ECoreError(std::string(text)); }

}  // namespace passband
