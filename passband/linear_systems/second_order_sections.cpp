#include "passband/linear_systems/second_order_sections.h"

#include <cstddef>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/linear_systems/quadratic_internal.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

constexpr std::size_t kSection = 6;
constexpr std::int32_t kMostPoles = 715827882;  // 6 coefficients for 2 poles have to be counted in 32 bits

void Check(const TVec& z, const TVec& p) {
  if (p.Length() == 0) ERaise("p.Length = 0");
  if (z.Length() != p.Length()) ERaise("z.Length <> p.Length");
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
  if (p.Length() > kMostPoles) ERaise("p.Length > 715827882");
}

// The polynomials of one or two roots, in descending powers, at c[0 .. 2].
void WritePolynomial(std::span<const TCplx> roots, double* c) {
  c[0] = 1;
  if (roots.size() == 1) {
    c[1] = -roots[0].Re;
    c[2] = 0;
  } else {
    const auto [c1, c2] = detail::RealQuadratic(roots[0], roots[1]);
    c[1] = c1;
    c[2] = c2;
  }
}

void WriteSections(const TVec& z, const TVec& p, double k, std::span<double> sos) {
  const detail::Roots zeros = detail::ReadRoots(z);
  const detail::Roots poles = detail::ReadRoots(p);
  const std::size_t count = poles.size();
  for (std::size_t i = 0; 2 * i < count; ++i) {
    const std::size_t taken = 2 * i + 1 < count ? 2 : 1;
    WritePolynomial(std::span(zeros).subspan(2 * i, taken), &sos[kSection * i]);
    WritePolynomial(std::span(poles).subspan(2 * i, taken), &sos[kSection * i + 3]);
  }
  for (double& b : sos.last(kSection).first(3)) b *= k;
}

}  // namespace

void ZeroPoleToSOS(TVec& sos, TVec& z, TVec& p, double k) {
  Check(z, p);
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  const Borrowed<TVec> sections;
  detail::PairRoots(z, *zeros);
  detail::PairRoots(p, *poles);
  sections->Size((p.Length() + 1) / 2 * static_cast<std::int32_t>(kSection), TMtxFloatPrecision::DoubleReal);
  WriteSections(*zeros, *poles, k, sections->Values());
  sections->SetFloatPrecision(MakePrecision(false, z.IsDouble()));
  z.Take(*zeros);
  p.Take(*poles);
  sos.Take(*sections);
}

}  // namespace passband::LinearSystems
