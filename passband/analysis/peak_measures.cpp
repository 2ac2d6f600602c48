#include "passband/analysis/peak_measures.h"

#include <cmath>

namespace passband::SignalUtils {
namespace {

double Larger(double up, double down) { return up > down ? up : down; }

}  // namespace

double Crest(double Rms, double PeakValue) { return Rms == 0 ? 0 : PeakValue / Rms; }
double Crest(TCplx Rms, TCplx PeakValue) { return Rms == TCplx{} ? 0 : CAbs(CDiv(PeakValue, Rms)); }

double Peak(double MaxValue, double MinValue, double MeanValue) {
  return Larger(std::abs(MaxValue - MeanValue), std::abs(MeanValue - MinValue));
}
double Peak(TCplx MaxValue, TCplx MinValue, TCplx MeanValue) {
  return Larger(CAbs(MaxValue - MeanValue), CAbs(MeanValue - MinValue));
}

}  // namespace passband::SignalUtils
