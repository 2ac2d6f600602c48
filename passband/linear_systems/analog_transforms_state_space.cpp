#include <cstdint>

#include "passband/linear_systems/analog_transforms.h"
#include "passband/linear_systems/state_space_work_internal.h"

namespace passband::LinearSystems {
namespace {

using detail::StateSpaceWork;

// C := C A^-1, D := D - C A^-1 B, B := factor A^-1 B.
void DivideByA(StateSpaceWork& system, double factor) {
  const Borrowed<TVec> output;
  system.a->LUSolve(*system.c, *output, TMtxType::General, TMtxOperation::Transposed);
  system.c->Take(*output);
  system.d -= system.c->DotProd(*system.b);
  const Borrowed<TVec> input;
  system.a->LUSolve(*system.b, *input);
  system.b->Take(*input);
  system.b->Scale(factor);
}

// Twice the states: A := [[A, -coupling I], [coupling I, 0]], B := [B; 0], C := [C, 0].
void DoubleStates(StateSpaceWork& system, double coupling) {
  const std::int32_t n = system.a->Rows();
  const Borrowed<TMtx> doubled;
  doubled->Size(2 * n, 2 * n, *system.a);
  doubled->SetZero();
  doubled->Copy(*system.a, 0, 0, 0, 0, n, n);
  for (std::int32_t i = 0; i < n; ++i) {
    doubled->SetDefault(n + i, i, coupling);
    doubled->SetDefault(i, n + i, -coupling);
  }
  system.a->Take(*doubled);
  system.b->Resize(2 * n, true);
  system.c->Resize(2 * n, true);
}

}  // namespace

void LowpassToLowpass(TMtx& A, TVec& B, TVec& C, double& D, double Wc) {
  StateSpaceWork system(A, B, C, D);
  system.a->Scale(Wc);
  system.b->Scale(Wc);
  system.Store(A, B, C, D);
}

void LowpassToHighpass(TMtx& A, TVec& B, TVec& C, double& D, double Wc) {
  StateSpaceWork system(A, B, C, D);
  DivideByA(system, -Wc);
  system.a->Inv();
  system.a->Scale(Wc);
  system.Store(A, B, C, D);
}

void LowpassToBandpass(TMtx& A, TVec& B, TVec& C, double& D, double Wo, double Bw) {
  StateSpaceWork system(A, B, C, D);
  system.a->Scale(Bw);
  system.b->Scale(Bw);
  DoubleStates(system, Wo);
  system.Store(A, B, C, D);
}

void LowpassToBandstop(TMtx& A, TVec& B, TVec& C, double& D, double Wo, double Bw) {
  StateSpaceWork system(A, B, C, D);
  DivideByA(system, -Bw);
  system.a->Inv();
  system.a->Scale(Bw);
  DoubleStates(system, -Wo);
  system.Store(A, B, C, D);
}

}  // namespace passband::LinearSystems
