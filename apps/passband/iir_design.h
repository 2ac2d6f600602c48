// From the description of an IIR filter to its numbers.
#pragma once

#include <complex>
#include <cstddef>
#include <string>
#include <vector>

#include <passband/passband.h>

#include "iir_options.h"
#include "iir_requirement.h"

namespace passband_cli {

/// Numbers with a name: one, a row, or a table.
struct NumberTable {
  std::string name;
  int rank = 0;             ///< 0: one number, 1: a row, 2: a table
  std::size_t columns = 1;  ///< of a table
  std::vector<double> values;

  std::size_t Rows() const { return values.size() / columns; }
};

/// A filter in the form that was asked for, and what is known about it. The form decides on the numbers:
///
///     sos  sections (b0 b1 b2 a0 a1 a2 a row)
///     zpk  zeros, poles (real and imaginary part a row), gain: H = gain prod(x - z[i]) / prod(x - p[i]), x = z or s
///     ss   A, B, C, D
///     tf   numerator, denominator, in descending powers of z or s, of one length
struct IirDesign {
  const IirFamily* family = nullptr;
  IirRequirement requirement;
  IirOptions options;  ///< with the form and the route settled
  IirOrder order;
  std::string title;   ///< for people, as in "elliptic bandpass of order 5, 300 to 3400 Hz"
  std::string record;  ///< a JSON object with all but the numbers
  std::vector<NumberTable> numbers;

  bool IsDouble() const { return options.precision == "double"; }
};

/// Checks the description, estimates the order when it is not given, and designs the filter. What cannot be designed as
/// it was asked for raises a `Failure`.
IirDesign DesignIir(const IirOptions& options);

/// H = gain prod(x - zeros[i]) / prod(x - poles[i]), x = z of a digital filter, s of an analog one.
struct ZeroPole {
  std::vector<std::complex<double>> zeros;
  std::vector<std::complex<double>> poles;
  double gain = 1;
};

/// Zeros and poles of a design, whatever its form, in double.
ZeroPole RootsOf(const IirDesign& design);

}  // namespace passband_cli
