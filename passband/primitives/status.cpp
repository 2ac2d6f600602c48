#include "passband/primitives/status.h"

namespace passband::primitives {

std::string_view StatusText(Status status) {
  switch (status) {
    case Status::Ok:
      return "no error";
    case Status::BadArgument:
      return "an argument is outside its range";
    case Status::BadSize:
      return "a length is outside its range";
    case Status::NullPointer:
      return "a pointer is null";
    case Status::OutOfMemory:
      return "not enough memory";
    case Status::DivisionByZero:
      return "a coefficient that divides is zero";
    case Status::BadPhase:
      return "a phase is outside the range 0 to factor - 1";
    case Status::BadFactor:
      return "a rate factor is below 1";
  }
  return "unknown status";
}

}  // namespace passband::primitives
