// The rows of models, cepstra, searches and spectral helpers.
#pragma once

#include <vector>

#include "tests/invariants/rows.h"

namespace passband::test {

std::vector<CallRow> AnalysisRows();
std::vector<CallRow> RefusedAnalysisRows();

}  // namespace passband::test
