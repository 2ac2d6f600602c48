// How the program gives up: one line for the person at the keyboard.
#pragma once

#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace passband_cli {

/// Ends the command; `main` prints the text behind "passband: " and exits with 1.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws a `Failure` whose text is formatted like `fmt::format`.
template <class... Args>
[[noreturn]] void Fail(fmt::format_string<Args...> format, Args&&... args) {
  throw Failure(fmt::format(format, std::forward<Args>(args)...));
}

}  // namespace passband_cli
