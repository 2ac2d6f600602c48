// Scalars, element types, failures and the published enumerations: what everything else stands on.
#pragma once

#include "passband/foundation/clock.h"
#include "passband/foundation/complex.h"
#include "passband/foundation/element_types.h"
#include "passband/foundation/enum_info.h"
#include "passband/foundation/enumerations.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/open_array.h"
#include "passband/foundation/scalars.h"
#include "passband/foundation/text.h"
