// The exceptions of the library. A failed check is reported by an exception whose message is a fixed text, as a rule the
// violated condition; the texts are part of the interface.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "passband/foundation/export.h"

namespace passband {

/// Base of every exception that the library throws. Copies never throw: they share the text.
class PASSBAND_EXPORT Exception : public std::runtime_error {
 public:
  explicit Exception(const std::string& text) : std::runtime_error(text) {}
  Exception(const Exception&) noexcept = default;
  Exception& operator=(const Exception&) noexcept = default;
  ~Exception() override;

  /// The text that the exception was raised with, the same as `what()`.
  std::string Message() const { return what(); }
};

/// What `ERaise` throws: a violated precondition of a routine or of a vector operation.
class PASSBAND_EXPORT ECoreError : public Exception {
 public:
  using Exception::Exception;
  ECoreError(const ECoreError&) noexcept = default;
  ECoreError& operator=(const ECoreError&) noexcept = default;
  ~ECoreError() override;
};

/// An argument whose value lies outside the domain of the routine.
class PASSBAND_EXPORT ELatticaInvalidArgument : public Exception {
 public:
  using Exception::Exception;
  ELatticaInvalidArgument(const ELatticaInvalidArgument&) noexcept = default;
  ELatticaInvalidArgument& operator=(const ELatticaInvalidArgument&) noexcept = default;
  ~ELatticaInvalidArgument() override;
};

/// Throws `ECoreError` with the text.
[[noreturn]] PASSBAND_EXPORT void ERaise(std::string_view text);

}  // namespace passband
