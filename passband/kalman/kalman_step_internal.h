// The arithmetic of a Kalman step on real matrices that fit each other, without allocation once it has run.
#pragma once

#include <cstdint>
#include <vector>

#include "passband/vector_core/mtx.h"

namespace passband::AdaptiveFiltering::detail {

/// Whether `m` has this shape and precision.
inline bool Fits(const TMtx& m, std::int32_t rows, std::int32_t cols, TMtxFloatPrecision precision) {
  return m.Rows() == rows && m.Cols() == cols && m.FloatPrecision() == precision;
}

/// The noise covariance of a step: V R V^T, with r V V^T for one element r of R, and R itself without V.
struct Noise {
  const TMtx& covariance;
  const TMtx* jacobian = nullptr;
  bool scalar = false;  // `covariance` holds the factor r
};

/// Whether a noise covariance has `size` rows and columns in a precision.
bool Fits(const Noise& noise, std::int32_t size, TMtxFloatPrecision precision);

/// A measurement matrix, or one number that stands for itself times the identity.
struct MeasurementMatrix {
  const TMtx& matrix;
  bool scalar = false;
};

/// The element of a matrix that has one.
TCplx ElementOf(const TMtx& m);
/// m = e m with the element e of a matrix that has one; complex when e is.
void ScaleByElement(TMtx& m, const TMtx& element);

/// Every operation takes real matrices of one precision that fit each other, computes in double and stores its result
/// last: when memory runs out, nothing has changed.
class KalmanStep {
 public:
  /// x = A x.
  void PredictState(const TMtx& a, TMtx& x);
  /// P = A P A^T + noise.
  void PredictCovariance(const TMtx& a, const Noise& noise, TMtx& p);
  /// K = P H^T S^-1 with S = H P H^T + noise, by Cholesky's decomposition. False, with K unchanged, when S is not
  /// symmetric and positive definite beyond rounding.
  bool Gain(const TMtx& p, const MeasurementMatrix& h, const Noise& noise, TMtx& k);
  /// x = x + K (z - H x).
  void CorrectState(const MeasurementMatrix& h, const TMtx& k, const TMtx& z, TMtx& x);
  /// x = x + K (z - predicted).
  void CorrectState(const TMtx& predicted, const TMtx& k, const TMtx& z, TMtx& x);
  /// P = (I - K H) P.
  void CorrectCovariance(const MeasurementMatrix& h, const TMtx& k, TMtx& p);
  /// The symmetric part of (I - K H) P (I - K H)^T + K noise K^T with the noise of the last gain.
  void CorrectCovarianceByJoseph(const MeasurementMatrix& h, const TMtx& k, TMtx& p);

 private:
  using Work = std::vector<double>;

  const double* ReadMeasurementMatrix(const MeasurementMatrix& h, std::int32_t n);
  void FormNoise(const Noise& noise, std::int32_t size);
  void Correct(const TMtx& k, const TMtx& z, const double* predicted, TMtx& x);

  // Operands of single precision, widened; what they hold lasts for one operation.
  Work a_, p_, x_, z_, k_, h_, covariance_, jacobian_;
  Work transposed_, product_, result_, innovation_, gain_, s_;
  Work noise_;  // of the last gain
};

}  // namespace passband::AdaptiveFiltering::detail
