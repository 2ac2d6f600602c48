// Passband: digital signal processing for engineering and measurement. This header brings in everything.
#pragma once

#include "passband/fir_design/fir_design.h"
#include "passband/foundation/foundation.h"
#include "passband/streaming/streaming.h"
#include "passband/vector_core/vector_core.h"
#include "passband/windows/windows.h"
