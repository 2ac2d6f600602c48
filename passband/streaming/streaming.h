// Filters that run over a stream block by block, their state carried from call to call.
#pragma once

#include "passband/streaming/byte_array.h"
#include "passband/streaming/circular_buffer.h"
#include "passband/streaming/consistent_parameter.h"
#include "passband/streaming/dc_removal.h"
#include "passband/streaming/delay_filter.h"
#include "passband/streaming/differentiate.h"
#include "passband/streaming/exponential_average.h"
#include "passband/streaming/fir_filter.h"
#include "passband/streaming/iir_filter.h"
#include "passband/streaming/median_filter.h"
#include "passband/streaming/moving_average.h"
#include "passband/streaming/notch_filter.h"
#include "passband/streaming/peak_hold.h"
#include "passband/streaming/running_statistics.h"
