// Generators and analysis of signals, and helpers for what they find.
#pragma once

#include "passband/analysis/sort_conj.h"
