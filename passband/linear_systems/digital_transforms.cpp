#include "passband/linear_systems/digital_transforms.h"

#include <cmath>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/linear_systems/bilinear.h"
#include "passband/linear_systems/gain.h"
#include "passband/linear_systems/rational_substitution.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/linear_systems/scaled_product_internal.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

// What replaces z, as a quotient of two polynomials in double.
struct Mapping {
  TVec nz;
  TVec dz;
};

struct Edges {
  Edges(double centre, double width)
      : low(2 * centre * centre / (width + std::sqrt(width * width + 4 * centre * centre))), high(low + width) {}

  double HalfWidth() const { return PI * (high - low) / 2; }
  // cos((w2 + w1) / 2) / cos((w2 - w1) / 2)
  double Middle() const { return std::cos(PI * (high + low) / 2) / std::cos(HalfWidth()); }
  // The centre of the prewarped band, on the unit circle.
  TCplx Centre() const {
    const double w = std::sqrt(BilinearPrewarp(low, 2)) * std::sqrt(BilinearPrewarp(high, 2));
    return Expj(PI * BilinearUnwarp(w, 2));
  }

  double low;
  double high;
};

Mapping ToLowpass(double freq, double proto_freq) {
  const double a = std::sin(PI * (proto_freq - freq) / 2) / std::sin(PI * (proto_freq + freq) / 2);
  return {{1, -a}, {-a, 1}};
}

Mapping ToHighpass(double freq, double proto_freq) {
  const double a = -std::cos(PI * (proto_freq + freq) / 2) / std::cos(PI * (proto_freq - freq) / 2);
  return {{-1, -a}, {a, 1}};
}

Mapping ToBandpass(const Edges& edges, double proto_freq) {
  const double K = Cot(edges.HalfWidth()) * std::tan(PI * proto_freq / 2);
  const double c1 = 2 * edges.Middle() * (K / (K + 1));
  const double c2 = (K - 1) / (K + 1);
  return {{-1, c1, -c2}, {c2, -c1, 1}};
}

Mapping ToBandstop(const Edges& edges, double proto_freq) {
  const double K = std::tan(edges.HalfWidth()) * std::tan(PI * proto_freq / 2);
  const double c1 = 2 * edges.Middle() / (K + 1);
  const double c2 = (1 - K) / (1 + K);
  return {{1, -c1, c2}, {c2, -c1, 1}};
}

// Re(prod(s - z) / prod(s - p)): the factors in turn, so that nothing leaves the range of a double.
double RealGain(const TVec& z, const TVec& p, TCplx s) {
  const detail::Roots zeros = detail::ReadRoots(z);
  const detail::Roots poles = detail::ReadRoots(p);
  detail::ScaledProduct gain;
  for (const TCplx zero : zeros) gain.Multiply(s - zero);
  for (const TCplx pole : poles) gain.Divide(s - pole);
  return gain.Re();
}

// Maps copies in double, sets their gain by `gain_of(z, p)` and stores both.
template <class GainOf>
void Substitute(TVec& z, TVec& p, double& k, const Mapping& mapping, GainOf gain_of) {
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
  const bool is_double = p.IsDouble();
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  zeros->Copy(z);
  poles->Copy(p);
  zeros->SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  poles->SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  RationalSubstitution(*zeros, *poles, k, mapping.nz, mapping.dz);
  const double gain = 1 / gain_of(*zeros, *poles);
  zeros->SetFloatPrecision(MakePrecision(true, is_double));
  poles->SetFloatPrecision(MakePrecision(true, is_double));
  z.Take(*zeros);
  p.Take(*poles);
  k = gain;
}

auto GainAt(double s) {
  return [s](const TVec& z, const TVec& p) { return ComputeGain(z, p, s); };
}

}  // namespace

void LowpassToLowpassZ(TVec& z, TVec& p, double& k, double Freq, double ProtoFreq) {
  Substitute(z, p, k, ToLowpass(Freq, ProtoFreq), GainAt(1));
}

void LowpassToHighpassZ(TVec& z, TVec& p, double& k, double Freq, double ProtoFreq) {
  Substitute(z, p, k, ToHighpass(Freq, ProtoFreq), GainAt(-1));
}

void LowpassToBandPassZ(TVec& z, TVec& p, double& k, double CenterFreq, double Bw, double ProtoFreq) {
  const Edges edges(CenterFreq, Bw);
  Substitute(z, p, k, ToBandpass(edges, ProtoFreq),
             [s = edges.Centre()](const TVec& zeros, const TVec& poles) { return RealGain(zeros, poles, s); });
}

void LowpassToBandStopZ(TVec& z, TVec& p, double& k, double CenterFreq, double Bw, double ProtoFreq) {
  Substitute(z, p, k, ToBandstop({CenterFreq, Bw}, ProtoFreq), GainAt(1));
}

void LowpassToLowpassZ(TVec& num, TVec& den, double Freq, double ProtoFreq) {
  if (num.IsDouble() != den.IsDouble()) ERaise("num.IsDouble <> den.IsDouble");
  const Mapping mapping = ToLowpass(Freq, ProtoFreq);
  RationalSubstitution(num, den, mapping.nz, mapping.dz);
}

void LowpassToHighpassZ(TVec& num, TVec& den, double Freq, double ProtoFreq) {
  const Mapping mapping = ToHighpass(Freq, ProtoFreq);
  RationalSubstitution(num, den, mapping.nz, mapping.dz);
}

void LowpassToBandPassZ(TVec& num, TVec& den, double CenterFreq, double Bw, double ProtoFreq) {
  const Mapping mapping = ToBandpass({CenterFreq, Bw}, ProtoFreq);
  RationalSubstitution(num, den, mapping.nz, mapping.dz);
}

void LowpassToBandStopZ(TVec& num, TVec& den, double CenterFreq, double Bw, double ProtoFreq) {
  const Mapping mapping = ToBandstop({CenterFreq, Bw}, ProtoFreq);
  RationalSubstitution(num, den, mapping.nz, mapping.dz);
}

}  // namespace passband::LinearSystems
