#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/prototype_internal.h"

namespace passband::IIRFilters {

void ButterAnalog(std::int32_t Order, TVec& z, TVec& p, double& k) {
  detail::CheckPrecisions(z, p);
  detail::CheckOrder(Order);
  detail::Prototype prototype;
  for (std::int32_t i = 1; i <= Order / 2; ++i) {
    const detail::WideComplex pole = detail::ButterworthPole(i, Order);
    prototype.poles.push_back(pole);
    prototype.poles.push_back(std::conj(pole));
  }
  if (Order % 2 == 1) prototype.poles.emplace_back(-1);
  detail::Store(prototype, z, p, k);  // the product of the poles is 1
}

}  // namespace passband::IIRFilters
