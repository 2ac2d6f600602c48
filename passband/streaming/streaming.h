// Filters that run over a stream block by block, their state carried from call to call.
#pragma once

#include "passband/streaming/byte_array.h"
#include "passband/streaming/circular_buffer.h"
#include "passband/streaming/differentiate.h"
#include "passband/streaming/fir_filter.h"
#include "passband/streaming/iir_filter.h"
