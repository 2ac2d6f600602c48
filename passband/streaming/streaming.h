// Filters that run over a stream block by block, their state carried from call to call.
#pragma once

#include "passband/streaming/fir_filter.h"
