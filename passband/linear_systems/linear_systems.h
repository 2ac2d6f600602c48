// Linear time-invariant systems of one input and one output: their forms, and the mappings between bands and domains.
#pragma once

#include "passband/linear_systems/analog_transforms.h"
#include "passband/linear_systems/bilinear.h"
#include "passband/linear_systems/digital_transforms.h"
#include "passband/linear_systems/gain.h"
#include "passband/linear_systems/rational_substitution.h"
#include "passband/linear_systems/second_order_sections.h"
#include "passband/linear_systems/state_space_forms.h"
#include "passband/linear_systems/transfer_function_forms.h"
#include "passband/linear_systems/transmission_zeros.h"
