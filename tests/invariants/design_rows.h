// The rows of designs and conversions that write several results: one row for each result that the laws watch.
#pragma once

#include <vector>

#include "tests/invariants/rows.h"

namespace passband::test {

std::vector<CallRow> DesignRows();
std::vector<CallRow> RefusedDesignRows();

}  // namespace passband::test
