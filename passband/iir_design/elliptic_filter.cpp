#include "passband/iir_design/elliptic_filter.h"

#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/design_routes_internal.h"

namespace passband::IIRFilters {
namespace {

constexpr detail::Family kElliptic{
    .prototype = [](std::int32_t order, double ripple, double attenuation, TVec& z, TVec& p,
                    double& k) { EllipticAnalog(order, ripple, attenuation, z, p, k); },
    .exact_zeros = false,
    .unit_gain_bandstop = true,
    .discrete_needs_digital = true,
    .discrete_result = false,
    .checks_order = true,
    .checks_cutoffs = true,
    .state_space_precision = "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> C.IsDouble)"};

}  // namespace

double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                      SignalUtils::TFilterType FilterType, bool Analog, TVec& z, TVec& p, double& k,
                      TIirFrequencyTransform Transform) {
  return detail::DesignZeroPole({kElliptic, Order, Ripple, Attenuation, CutoffFreq, FilterType, Analog}, z, p, k,
                                Transform);
}

double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                      SignalUtils::TFilterType FilterType, bool Analog, TVec& num, TVec& den,
                      TIirFrequencyTransform Transform) {
  return detail::DesignTransferFunction({kElliptic, Order, Ripple, Attenuation, CutoffFreq, FilterType, Analog}, num,
                                        den, Transform);
}

double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                      SignalUtils::TFilterType FilterType, bool Analog, TVec& sos, TIirFrequencyTransform Transform) {
  return detail::DesignSections({kElliptic, Order, Ripple, Attenuation, CutoffFreq, FilterType, Analog}, sos,
                                Transform);
}

double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                      SignalUtils::TFilterType FilterType, bool Analog, TMtx& A, TVec& B, TVec& C, double& D) {
  return detail::DesignStateSpace({kElliptic, Order, Ripple, Attenuation, CutoffFreq, FilterType, Analog}, A, B, C, D);
}

}  // namespace passband::IIRFilters
