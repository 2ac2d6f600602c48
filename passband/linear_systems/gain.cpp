#include "passband/linear_systems/gain.h"

#include "passband/linear_systems/roots_internal.h"
#include "passband/linear_systems/scaled_product_internal.h"

namespace passband::LinearSystems {
namespace {

detail::ScaledProduct ProductOfDistances(const TVec& roots, TCplx s) {
  detail::ScaledProduct product;
  for (const TCplx root : detail::ReadRoots(roots)) product.Multiply(s - root);
  return product;
}

}  // namespace

double ComputeGain(const TVec& z, const TVec& p, double s) { return ComputeGain(z, p, Cplx(s)); }

double ComputeGain(const TVec& z, const TVec& p, TCplx s) {
  return ProductOfDistances(z, s).ReOver(ProductOfDistances(p, s));
}

}  // namespace passband::LinearSystems
