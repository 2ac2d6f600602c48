// Second-order sections in files, as `passband design iir` writes them: the form to filter with.
#pragma once

#include <string>

#include <passband/passband.h>

namespace passband_cli {

/// Sections to filter with and what is known about them.
struct SectionSet {
  passband::TVec sections;  ///< six coefficients each, double or single precision
  double rate_hz = 0;       ///< sampling rate they are meant for; 0 when unknown
  std::string title;        ///< for people
};

/// Reads sections: CSV with six columns, the JSON of a design, or a JSON array of sections. Other forms of a filter are
/// refused; sections that are not stable get a note on standard error.
SectionSet ReadSections(const std::string& path, bool is_double);

}  // namespace passband_cli
