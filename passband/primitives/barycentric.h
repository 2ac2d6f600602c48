// Polynomial interpolation in barycentric form on nodes between -1 and 1.
#pragma once

#include <cstdint>

#include "passband/primitives/places.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// weights[k] 2^exponent = 1 / product of (x[k] - x[j]) over j != k, the power of two such that the largest of the
/// weights is between 0.5 and 1. Products are kept as mantissa and exponent, so that no number of nodes over- or
/// underflows; weights that are smaller than the largest by more than the range of doubles become 0. The nodes are
/// distinct.
/// Fails with BadSize (no nodes), NullPointer, OutOfMemory.
Status BarycentricWeights(Places nodes, double* weights, std::int64_t& exponent) noexcept;

/// values[i] = (sum of weights[k] ordinates[k] / (x[i] - x[k])) / (sum of weights[k] / (x[i] - x[k])) over the nodes,
/// the interpolating polynomial at the points; `weighted` holds the products weights[k] ordinates[k]. At a point that
/// is a node the value is not finite. For points among the nodes, where the polynomial is as large as the ordinates.
/// Cost: about a third of a division for each point and node.
/// Fails with BadSize (no nodes), NullPointer.
/// Literature: Berrut, Trefethen, "Barycentric Lagrange interpolation", SIAM Review 46, 2004.
Status BarycentricValues(Places nodes, const double* weights, const double* weighted, Places points,
                         double* values) noexcept;

/// The same polynomial as product of (x[i] - x[k]) times sum of weighted[k] 2^exponent / (x[i] - x[k]). This keeps its
/// digits where the polynomial is far larger than its ordinates, away from the nodes, and costs half as much again.
/// Fails with BadSize (no nodes), NullPointer, OutOfMemory.
/// Literature: Higham, "The numerical stability of barycentric Lagrange interpolation", IMA J. Numer. Anal. 24, 2004.
Status LagrangeValues(Places nodes, const double* weighted, std::int64_t exponent, Places points,
                      double* values) noexcept;

}  // namespace passband::primitives
