// IIR filters from a requirement: the order and the edges (`ButterOrder` and its like), then the design (`ButterFilter`
// and its like), from the analog lowpass of the family.
//
// Frequencies of digital filters are relative to half the sampling frequency: 1 is the highest. Those of analog filters
// are angular frequencies. Ripples and attenuations are in decibels, both positive. Filters to run over data are designed
// as second-order sections, which `IirInitBQ` takes; transfer functions of more than a few poles do not hold the digits.
#pragma once

#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/bessel_filter.h"
#include "passband/iir_design/butterworth_filter.h"
#include "passband/iir_design/chebyshev_filters.h"
#include "passband/iir_design/elliptic_filter.h"
#include "passband/iir_design/exact_zeros.h"
#include "passband/iir_design/order_estimation.h"
