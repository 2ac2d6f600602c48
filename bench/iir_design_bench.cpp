// IIR designs from the cut-offs to sections; nanoseconds a design. SciPy's rows are joined by run.sh.
#include <complex>
#include <cstdint>
#include <string>
#include <vector>

#include <liquid/liquid.h>  // after <complex>, whose types it then takes

#include "bench/rows.h"
#include "passband/iir_design/butterworth_filter.h"
#include "passband/iir_design/elliptic_filter.h"

namespace passband::bench {
namespace {

using SignalUtils::TFilterType;

void MeasureDesigns(const Rows& rows) {
  TVec sos;
  // liquid-dsp works in single precision and takes the prototype's order; its band runs in units of the sampling rate.
  std::vector<float> b(3 * 10);
  std::vector<float> a(3 * 10);
  const Peer liquid{"liquid_f32", [&] {
                      liquid_iirdes(LIQUID_IIRDES_ELLIP, LIQUID_IIRDES_BANDPASS, LIQUID_IIRDES_SOS, 10, 0.1F, 0.141421F,
                                    0.5F, 60.0F, b.data(), a.data());
                    }};
  const auto elliptic = [&] {
    IIRFilters::EllipticFilter(10, 0.5, 60, {0.2, 0.4}, TFilterType::ftBandpass, false, sos);
  };
  rows.Measure("iir_design", "family=elliptic;type=bandpass;order=10;form=sos", {.goal = 0.25}, elliptic, {});
  rows.Measure("iir_design", "family=elliptic;type=bandpass;order=10;form=sos;peer=f32", {}, elliptic, {liquid});
  rows.Measure("iir_design", "family=butterworth;type=bandpass;order=5;form=sos", {},
               [&] {
                 IIRFilters::ButterFilter(5, {0.2, 0.4}, TFilterType::ftBandpass, false, sos);
               },
               {});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) { passband::bench::MeasureDesigns(passband::bench::Rows(argc, argv)); }
