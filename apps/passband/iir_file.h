// IIR filters in files, as `passband design iir` writes them.
//
// CSV: sections are lines b0,b1,b2,a0,a1,a2; a transfer function the columns numerator and denominator, in descending
// powers; zeros and poles lines part,re,im; state space the matrix [A B; C D], line by line. JSON: an object that tells
// how the filter was designed and holds its numbers. C: arrays. Numbers have 17 significant digits, from which every double
// is read back exactly; those of single precision in C have 9.
#pragma once

#include <string>

#include "iir_design.h"

namespace passband_cli {

enum class IirFormat { Csv, Json, C };

/// The text of a file that holds the design.
std::string FormatIir(const IirDesign& design, IirFormat format);

}  // namespace passband_cli
