// Generators and analysis of signals, and helpers for what they find.
#pragma once

#include "passband/analysis/chirp_z.h"
#include "passband/analysis/frequency_response.h"
#include "passband/analysis/goertzel.h"
#include "passband/analysis/group_delay.h"
#include "passband/analysis/log_ramp.h"
#include "passband/analysis/sort_conj.h"
