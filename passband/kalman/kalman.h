// Kalman filters, linear and extended.
#pragma once

#include "passband/kalman/base_kalman_filter.h"
#include "passband/kalman/extended_kalman_filter.h"
#include "passband/kalman/kalman_filter.h"
