#include <cmath>
#include <cstddef>

#include "passband/foundation/exceptions.h"
#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/band_edges_internal.h"
#include "passband/iir_design/design_routes_internal.h"
#include "passband/iir_design/exact_zeros.h"
#include "passband/linear_systems/linear_systems.h"
#include "passband/vector_core/pool.h"

namespace passband::IIRFilters::detail {
namespace {

using enum SignalUtils::TFilterType;
using enum TIirFrequencyTransform;

// Digital filters are made at this sampling frequency: frequencies are then relative to half of it.
constexpr double kRate = 2.0;

// Zeros, poles and gain in work, always in double: a result in single precision is rounded once, at the end.
struct ZeroPoleGain {
  ZeroPoleGain() {
    z->Size(0, true, true);
    p->Size(0, true, true);
  }
  Borrowed<TVec> z;
  Borrowed<TVec> p;
  double k = 1;
};

struct StateSpace {
  Borrowed<TMtx> A;
  Borrowed<TVec> B;
  Borrowed<TVec> C;
  double D = 0;
};

void MakePrototype(const Request& request, ZeroPoleGain& filter) {
  request.family.prototype(request.order, request.ripple, request.attenuation, *filter.z, *filter.p, filter.k);
}

// The overloads of the analog mappings for zeros and poles and for state space take the band alike.
template <class... Form>
void MapToBand(SignalUtils::TFilterType type, const Band& band, Form&... form) {
  switch (type) {
    case ftLowpass:
      return LinearSystems::LowpassToLowpass(form..., band.centre);
    case ftHighpass:
      return LinearSystems::LowpassToHighpass(form..., band.centre);
    case ftBandpass:
      return LinearSystems::LowpassToBandpass(form..., band.centre, band.width);
    case ftBandstop:
      return LinearSystems::LowpassToBandstop(form..., band.centre, band.width);
    default:
      return;
  }
}

void MapToDigitalBand(SignalUtils::TFilterType type, const Band& band, ZeroPoleGain& filter) {
  // The bilinear transform puts the prototype's cut-off of 1 rad/s here.
  const double prototype_cutoff = LinearSystems::BilinearUnwarp(1.0, kRate);
  switch (type) {
    case ftLowpass:
      return LinearSystems::LowpassToLowpassZ(*filter.z, *filter.p, filter.k, band.centre, prototype_cutoff);
    case ftHighpass:
      return LinearSystems::LowpassToHighpassZ(*filter.z, *filter.p, filter.k, band.centre, prototype_cutoff);
    case ftBandpass:
      return LinearSystems::LowpassToBandPassZ(*filter.z, *filter.p, filter.k, band.centre, band.width,
                                               prototype_cutoff);
    case ftBandstop:
      return LinearSystems::LowpassToBandStopZ(*filter.z, *filter.p, filter.k, band.centre, band.width,
                                               prototype_cutoff);
    default:
      return;
  }
}

Band AnalogBand(const Request& request) {
  return PrepareBand(request.cutoffs, request.type, request.analog ? EdgeScale::Analog : EdgeScale::Prewarped);
}

// Prototype, analog band, bilinear transform, all on zeros and poles.
double ByZeroPoleAnalog(const Request& request, ZeroPoleGain& filter) {
  const Band band = AnalogBand(request);
  MakePrototype(request, filter);
  MapToBand(request.type, band, *filter.z, *filter.p, filter.k);
  if (!request.analog) {
    LinearSystems::Bilinear(*filter.z, *filter.p, filter.k, kRate, true);
    if (request.type == ftBandstop && request.family.unit_gain_bandstop) {
      filter.k = 1 / LinearSystems::ComputeGain(*filter.z, *filter.p, 1.0);
    }
  }
  return band.centre;
}

// Prototype, bilinear transform, digital band: the edges are not prewarped, the all-pass substitution does that.
double ByZeroPoleDiscrete(const Request& request, ZeroPoleGain& filter) {
  if (request.analog && request.family.discrete_needs_digital) ERaise("Analog not supported with ftZeroPoleDiscrete");
  const Band band = PrepareBand(request.cutoffs, request.type, EdgeScale::Digital);
  MakePrototype(request, filter);
  LinearSystems::Bilinear(*filter.z, *filter.p, filter.k, kRate, true);
  MapToDigitalBand(request.type, band, filter);
  return request.family.discrete_result ? band.centre : 0;
}

// Prototype to state space, analog band and bilinear transform there.
double InStateSpace(const Request& request, StateSpace& filter) {
  const Family& family = request.family;
  if (family.checks_order && request.order > MaxIirOrder) ERaise("Order > MaxIirOrder");
  if (family.checks_cutoffs && request.cutoffs.Length() > 2) ERaise("CutoffFreq.Length > 2");
  const Band band = AnalogBand(request);
  ZeroPoleGain prototype;
  MakePrototype(request, prototype);
  LinearSystems::ZeroPoleToStateSpace(*filter.A, *filter.B, *filter.C, filter.D, *prototype.z, *prototype.p,
                                      prototype.k);
  MapToBand(request.type, band, *filter.A, *filter.B, *filter.C, filter.D);
  if (!request.analog) LinearSystems::Bilinear(*filter.A, *filter.B, *filter.C, filter.D, kRate);
  return band.centre;
}

// C (x I - A)^-1 B + D, where it is real.
double Response(const StateSpace& filter, TCplx x) {
  const Borrowed<TMtx> distance;
  const Borrowed<TVec> input;
  const Borrowed<TVec> state;
  distance->Copy(*filter.A);
  distance->Scale(-1);
  distance->SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  input->Copy(*filter.B);
  input->SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  for (std::int32_t i = 0; i < distance->Rows(); ++i) {
    TCplx& element =
        distance->CValues()[static_cast<std::size_t>(i) * (static_cast<std::size_t>(distance->Cols()) + 1)];
    element = element + x;
  }
  distance->LUSolve(*input, *state);
  double sum = filter.D;
  for (std::size_t i = 0; i < state->CValues().size(); ++i) sum += filter.C->Values()[i] * state->CValues()[i].Re;
  return sum;
}

// Where the pass band of a digital filter is far from its zeros: k of a filter of high order is so small that D, a sum
// of terms of the size of 1, does not hold its digits.
void RenewGain(const Request& request, double wn, const StateSpace& state_space, ZeroPoleGain& filter) {
  if (request.analog) return;
  const double angle = 2 * std::atan(wn / (2 * kRate));
  const TCplx at = request.type == ftHighpass   ? Cplx(-1)
                   : request.type == ftBandpass ? TCplx{std::cos(angle), std::sin(angle)}
                                                : Cplx(1);
  filter.k = Response(state_space, at) / LinearSystems::ComputeGain(*filter.z, *filter.p, at);
}

double ByStateSpace(const Request& request, ZeroPoleGain& filter) {
  StateSpace state_space;
  const double wn = InStateSpace(request, state_space);
  LinearSystems::StateSpaceToZeroPole(*filter.z, *filter.p, filter.k, *state_space.A, *state_space.B, *state_space.C,
                                      state_space.D);
  if (request.family.exact_zeros && (HasOneEdge(request.type) || HasTwoEdges(request.type))) {
    ExactIirZeros(request.order, wn, request.type, request.analog, *filter.z);
    RenewGain(request, wn, state_space, filter);
  }
  return wn;
}

double Design(const Request& request, ZeroPoleGain& filter, TIirFrequencyTransform transform) {
  switch (transform) {
    case ftStateSpaceAnalog:
      return ByStateSpace(request, filter);
    case ftZeroPoleAnalog:
      return ByZeroPoleAnalog(request, filter);
    case ftZeroPoleDiscrete:
      return ByZeroPoleDiscrete(request, filter);
  }
  ERaise("not (ftStateSpaceAnalog <= Transform <= ftZeroPoleDiscrete)");
}

void Round(TDense& result, bool is_double) { result.SetFloatPrecision(MakePrecision(result.Complex(), is_double)); }

}  // namespace

double DesignZeroPole(const Request& request, TVec& z, TVec& p, double& k, TIirFrequencyTransform transform) {
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
  ZeroPoleGain filter;
  const double wn = Design(request, filter, transform);
  Round(*filter.z, z.IsDouble());
  Round(*filter.p, p.IsDouble());
  z.Take(*filter.z);
  p.Take(*filter.p);
  k = filter.k;
  return wn;
}

double DesignTransferFunction(const Request& request, TVec& num, TVec& den, TIirFrequencyTransform transform) {
  if (num.IsDouble() != den.IsDouble()) ERaise("num.IsDouble <> den.IsDouble");
  ZeroPoleGain filter;
  const double wn = Design(request, filter, transform);
  const Borrowed<TVec> b;
  const Borrowed<TVec> a;
  LinearSystems::ZeroPoleToTransferFun(*b, *a, *filter.z, *filter.p, filter.k);
  Round(*b, num.IsDouble());
  Round(*a, den.IsDouble());
  num.Take(*b);
  den.Take(*a);
  return wn;
}

double DesignSections(const Request& request, TVec& sos, TIirFrequencyTransform transform) {
  ZeroPoleGain filter;
  const double wn = Design(request, filter, transform);
  const Borrowed<TVec> sections;
  LinearSystems::ZeroPoleToSOS(*sections, *filter.z, *filter.p, filter.k);
  Round(*sections, sos.IsDouble());
  sos.Take(*sections);
  return wn;
}

double DesignStateSpace(const Request& request, TMtx& A, TVec& B, TVec& C, double& D) {
  if (A.IsDouble() != B.IsDouble() || A.IsDouble() != C.IsDouble()) ERaise(request.family.state_space_precision);
  StateSpace filter;
  const double wn = InStateSpace(request, filter);
  Round(*filter.A, A.IsDouble());
  Round(*filter.B, A.IsDouble());
  Round(*filter.C, A.IsDouble());
  A.Take(*filter.A);
  B.Take(*filter.B);
  C.Take(*filter.C);
  D = filter.D;
  return wn;
}

}  // namespace passband::IIRFilters::detail
