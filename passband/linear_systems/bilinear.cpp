#include "passband/linear_systems/bilinear.h"

#include <cmath>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/linear_systems/scaled_product_internal.h"
#include "passband/linear_systems/state_space_work_internal.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

void Map(detail::Roots& roots, double f) {
  for (TCplx& x : roots) x = CDiv(CAdd(f, x), CSub(f, x));
}

}  // namespace

void Bilinear(TVec& z, TVec& p, double& k, double FS, bool AddZeros) {
  if (z.Length() > p.Length()) throw Exception("z.Length > p.Length");
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
  const double f = 2 * FS;
  detail::Roots zeros = detail::ReadRoots(z);
  detail::Roots poles = detail::ReadRoots(p);
  detail::ScaledProduct gain;
  for (std::size_t i = 0; i < poles.size(); ++i) {
    if (i < zeros.size()) gain.Multiply(CSub(f, zeros[i]));
    gain.Divide(CSub(f, poles[i]));
  }
  Map(zeros, f);
  Map(poles, f);
  if (AddZeros) zeros.resize(poles.size(), Cplx(-1));
  const Borrowed<TVec> new_zeros;
  const Borrowed<TVec> new_poles;
  detail::WriteRoots(*new_zeros, zeros, z.IsDouble());
  detail::WriteRoots(*new_poles, poles, p.IsDouble());
  new_zeros->SetFloatPrecision(z.FloatPrecision());
  z.Take(*new_zeros);
  p.Take(*new_poles);
  k = gain.ReTimes(k);
}

void Bilinear(TMtx& A, TVec& B, TVec& C, double& D, double FS) {
  const double T = 1 / FS;
  detail::StateSpaceWork system(A, B, C, D);
  const Borrowed<TMtx> plus;
  const Borrowed<TMtx> minus;
  const Borrowed<TMtx> half;
  half->Copy(*system.a);
  half->Scale(T / 2);
  plus->Eye(A.Rows(), A.Cols(), *half);
  minus->Copy(*plus);
  plus->Add(*half);
  minus->Sub(*half);
  const Borrowed<TVec> output;
  const Borrowed<TVec> input;
  minus->LUSolve(*system.c, *output, TMtxType::General, TMtxOperation::Transposed);
  minus->LUSolve(*system.b, *input);
  minus->LUSolve(*plus, *system.a);
  system.d += output->DotProd(*system.b) * (T / 2);
  output->Scale(std::sqrt(T));
  input->Scale(std::sqrt(T));
  system.b->Take(*input);
  system.c->Take(*output);
  system.Store(A, B, C, D);
}

double BilinearPrewarp(double Freq, double FS) {
  // The tangent next to its pole, from the distance to it.
  const double tangent = Freq > 0.5 && Freq < 1 ? 1 / std::tan(PI * (1 - Freq) / 2) : std::tan(PI * Freq / 2);
  return 2 * FS * tangent;
}

double BilinearUnwarp(double W, double FS) { return 2 / PI * std::atan(W / (2 * FS)); }

void MatchedZTransform(TVec& z, TVec& p, double FS) {
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  zeros->Copy(z);
  poles->Copy(p);
  zeros->Scale(1 / FS);
  poles->Scale(1 / FS);
  zeros->Exp();
  poles->Exp();
  z.Take(*zeros);
  p.Take(*poles);
}

}  // namespace passband::LinearSystems
