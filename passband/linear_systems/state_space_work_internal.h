// A system in state space in work: double copies of the caller's matrices, stored together at the end.
#pragma once

#include "passband/vector_core/mtx.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems::detail {

class StateSpaceWork {
 public:
  StateSpaceWork(const TMtx& A, const TVec& B, const TVec& C, double D) : d(D), is_double_(A.IsDouble()) {
    a->Copy(A);
    b->Copy(B);
    c->Copy(C);
    Convert(true);
  }

  /// Rounds to the precision of the caller's matrices and hands the results over; nothing fails after the first is stored.
  void Store(TMtx& A, TVec& B, TVec& C, double& D) {
    Convert(is_double_);
    A.Take(*a);
    B.Take(*b);
    C.Take(*c);
    D = d;
  }

  Borrowed<TMtx> a;
  Borrowed<TVec> b;
  Borrowed<TVec> c;
  double d;

 private:
  void Convert(bool to_double) {
    a->SetFloatPrecision(MakePrecision(a->Complex(), to_double));
    b->SetFloatPrecision(MakePrecision(b->Complex(), to_double));
    c->SetFloatPrecision(MakePrecision(c->Complex(), to_double));
  }

  bool is_double_;
};

}  // namespace passband::LinearSystems::detail
