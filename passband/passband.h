// Passband: digital signal processing for engineering and measurement. This header brings in everything.
#pragma once

#include "passband/analysis/analysis.h"
#include "passband/fir_design/fir_design.h"
#include "passband/foundation/foundation.h"
#include "passband/iir_design/iir_design.h"
#include "passband/kalman/kalman.h"
#include "passband/linear_systems/linear_systems.h"
#include "passband/streaming/streaming.h"
#include "passband/vector_core/vector_core.h"
#include "passband/windows/windows.h"
