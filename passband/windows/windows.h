// Window functions, their dispatcher and the parameter of the Kaiser window.
#pragma once

#include "passband/windows/bartlett.h"
#include "passband/windows/chebyshev.h"
#include "passband/windows/cosine_tapered.h"
#include "passband/windows/cosine_windows.h"
#include "passband/windows/exponent_window.h"
#include "passband/windows/kaiser.h"
#include "passband/windows/signal_window.h"
