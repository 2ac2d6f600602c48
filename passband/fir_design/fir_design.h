// Design of FIR filters.
#pragma once

#include "passband/fir_design/equiripple.h"
#include "passband/fir_design/equiripple_impulse.h"
#include "passband/fir_design/equiripple_length.h"
#include "passband/fir_design/fractional_fir.h"
#include "passband/fir_design/inverse_filter.h"
#include "passband/fir_design/kaiser_fir.h"
#include "passband/fir_design/savitzky_golay.h"
#include "passband/fir_design/windowed_fir.h"
