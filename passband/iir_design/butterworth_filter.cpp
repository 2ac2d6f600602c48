#include "passband/iir_design/butterworth_filter.h"

#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/design_routes_internal.h"

namespace passband::IIRFilters {
namespace {

constexpr detail::Family kButterworth{
    .prototype = [](std::int32_t order, double, double, TVec& z, TVec& p, double& k) { ButterAnalog(order, z, p, k); },
    .exact_zeros = true,
    .unit_gain_bandstop = false,
    .discrete_needs_digital = false,
    .discrete_result = true,
    .checks_order = false,
    .checks_cutoffs = false,
    .state_space_precision = "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> c.IsDouble)"};

}  // namespace

double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType, bool Analog, TVec& z,
                    TVec& p, double& k, TIirFrequencyTransform Transform) {
  return detail::DesignZeroPole({kButterworth, Order, 0, 0, CutoffFreq, FilterType, Analog}, z, p, k, Transform);
}

double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType, bool Analog,
                    TVec& num, TVec& den, TIirFrequencyTransform Transform) {
  return detail::DesignTransferFunction({kButterworth, Order, 0, 0, CutoffFreq, FilterType, Analog}, num, den,
                                        Transform);
}

double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType, bool Analog,
                    TVec& sos, TIirFrequencyTransform Transform) {
  return detail::DesignSections({kButterworth, Order, 0, 0, CutoffFreq, FilterType, Analog}, sos, Transform);
}

double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType, bool Analog, TMtx& A,
                    TVec& B, TVec& C, double& D) {
  return detail::DesignStateSpace({kButterworth, Order, 0, 0, CutoffFreq, FilterType, Analog}, A, B, C, D);
}

}  // namespace passband::IIRFilters
