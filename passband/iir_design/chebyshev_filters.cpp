#include "passband/iir_design/chebyshev_filters.h"

#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/design_routes_internal.h"

namespace passband::IIRFilters {
namespace {

constexpr detail::Family kChebyshevI{
    .prototype = [](std::int32_t order, double ripple, double, TVec& z, TVec& p,
                    double& k) { ChebyshevIAnalog(order, ripple, z, p, k); },
    .exact_zeros = true,
    .unit_gain_bandstop = true,
    .discrete_needs_digital = true,
    .discrete_result = true,
    .checks_order = true,
    .checks_cutoffs = false,
    .state_space_precision = "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> C.IsDouble)"};

constexpr detail::Family kChebyshevII{
    .prototype = [](std::int32_t order, double, double attenuation, TVec& z, TVec& p,
                    double& k) { ChebyshevIIAnalog(order, attenuation, z, p, k); },
    .exact_zeros = false,
    .unit_gain_bandstop = false,
    .discrete_needs_digital = true,
    .discrete_result = false,
    .checks_order = true,
    .checks_cutoffs = true,
    .state_space_precision = "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> C.IsDouble)"};

}  // namespace

double ChebyshevIFilter(std::int32_t Order, double Ripple, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                        bool Analog, TVec& z, TVec& p, double& k, TIirFrequencyTransform Transform) {
  return detail::DesignZeroPole({kChebyshevI, Order, Ripple, 0, CutoffFreq, FilterType, Analog}, z, p, k, Transform);
}

double ChebyshevIFilter(std::int32_t Order, double Ripple, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                        bool Analog, TVec& num, TVec& den, TIirFrequencyTransform Transform) {
  return detail::DesignTransferFunction({kChebyshevI, Order, Ripple, 0, CutoffFreq, FilterType, Analog}, num, den,
                                        Transform);
}

double ChebyshevIFilter(std::int32_t Order, double Ripple, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                        bool Analog, TVec& sos, TIirFrequencyTransform Transform) {
  return detail::DesignSections({kChebyshevI, Order, Ripple, 0, CutoffFreq, FilterType, Analog}, sos, Transform);
}

double ChebyshevIFilter(std::int32_t Order, double Ripple, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                        bool Analog, TMtx& A, TVec& B, TVec& C, double& D) {
  return detail::DesignStateSpace({kChebyshevI, Order, Ripple, 0, CutoffFreq, FilterType, Analog}, A, B, C, D);
}

double ChebyshevIIFilter(std::int32_t Order, double Attenuation, OpenArray CutoffFreq,
                         SignalUtils::TFilterType FilterType, bool Analog, TVec& z, TVec& p, double& k,
                         TIirFrequencyTransform Transform) {
  return detail::DesignZeroPole({kChebyshevII, Order, 0, Attenuation, CutoffFreq, FilterType, Analog}, z, p, k,
                                Transform);
}

double ChebyshevIIFilter(std::int32_t Order, double Attenuation, OpenArray CutoffFreq,
                         SignalUtils::TFilterType FilterType, bool Analog, TVec& num, TVec& den,
                         TIirFrequencyTransform Transform) {
  return detail::DesignTransferFunction({kChebyshevII, Order, 0, Attenuation, CutoffFreq, FilterType, Analog}, num, den,
                                        Transform);
}

double ChebyshevIIFilter(std::int32_t Order, double Attenuation, OpenArray CutoffFreq,
                         SignalUtils::TFilterType FilterType, bool Analog, TVec& sos,
                         TIirFrequencyTransform Transform) {
  return detail::DesignSections({kChebyshevII, Order, 0, Attenuation, CutoffFreq, FilterType, Analog}, sos, Transform);
}

double ChebyshevIIFilter(std::int32_t Order, double Attenuation, OpenArray CutoffFreq,
                         SignalUtils::TFilterType FilterType, bool Analog, TMtx& A, TVec& B, TVec& C, double& D) {
  return detail::DesignStateSpace({kChebyshevII, Order, 0, Attenuation, CutoffFreq, FilterType, Analog}, A, B, C, D);
}

}  // namespace passband::IIRFilters
