// Vectors, matrices and the numerical routines on them.
#pragma once

#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/elliptic.h"
#include "passband/vector_core/generalized_eigenvalues.h"
#include "passband/vector_core/interpolation.h"
#include "passband/vector_core/levinson.h"
#include "passband/vector_core/minimisers.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/normal_distribution.h"
#include "passband/vector_core/polynomials.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/sorting.h"
#include "passband/vector_core/vec.h"
