#include "passband/kalman/kalman_filter.h"

#include "passband/foundation/exceptions.h"
#include "passband/kalman/kalman_step_internal.h"

namespace passband::AdaptiveFiltering {

using detail::Fits;

TKalmanFilter::TKalmanFilter() {
  Watch(u);
  Watch(B);
}

TKalmanFilter::~TKalmanFilter() = default;

// x = A x + B u.
void TKalmanFilter::DriveState() {
  tmpM.Mul(A, x);
  FOnDrivingFunction(u);
  if (u.Rows() != x.Rows() || u.Cols() != x.Cols()) ERaise("Driving vector u size does not match size of x.");
  if (!TimeInitialized) B_IsScalar = B.Length() == 1;  // the handler may have sized B
  if (B_IsScalar) {
    tmpA.Copy(u);
    detail::ScaleByElement(tmpA, B);
  } else {
    tmpA.Mul(B, u);
  }
  tmpM.Add(tmpA);
  x.Copy(tmpM);
}

void TKalmanFilter::PredictCovariance() {
  const std::int32_t n = P.Rows();
  const TMtxFloatPrecision precision = P.FloatPrecision();
  const detail::Noise noise{Q};
  if (!P.Complex() && Fits(P, n, n, precision) && Fits(A, n, n, precision) && Fits(noise, n, precision)) {
    Step().PredictCovariance(A, noise, P);
    return;
  }
  tmpM.Mul(A, P);
  P.Mul(tmpM, A, TMtxOperation::None, TMtxOperation::Transposed);
  P.Add(Q);
}

void TKalmanFilter::TimeUpdate() {
  if (!TimeInitialized) {
    Q_IsScalar = Q.Length() == 1;
    B_IsScalar = B.Length() == 1;
    TimeInitialized = true;
  }
  if (FOnDrivingFunction) {
    DriveState();
  } else if (!x.Complex() && Fits(A, x.Rows(), x.Rows(), x.FloatPrecision()) && x.Cols() == 1) {
    Step().PredictState(A, x);
  } else {
    tmpM.Mul(A, x);
    x.Copy(tmpM);
  }
  PredictCovariance();
}

// Whether the correction can run on real matrices that fit each other.
bool TKalmanFilter::FitsStep() const {
  const std::int32_t n = x.Rows();
  const std::int32_t m = H_IsScalar ? n : H.Rows();
  const TMtxFloatPrecision precision = x.FloatPrecision();
  return !x.Complex() && x.Cols() == 1 && n > 0 && m > 0 && Fits(P, n, n, precision) && Fits(z, m, 1, precision) &&
         Fits(R, m, m, precision) && Fits(H, H_IsScalar ? 1 : m, H_IsScalar ? 1 : n, precision);
}

// K = P H^T S^-1 as the solution of S^T K^T = H P^T.
void TKalmanFilter::FormGain() {
  if (H_IsScalar) {
    const double h = H(0, 0);
    tmpM.Mul(P, h);
    tmpA.Mul(tmpM, h);
  } else {
    tmpM.Mul(P, H, TMtxOperation::None, TMtxOperation::Transposed);
    tmpA.Mul(H, tmpM);
  }
  tmpA.Add(R);
  tmpM.Transp();
  tmpA.LQRSolve(tmpM, K, nullptr, TMtxOperation::Transposed);
  K.Transp();
}

void TKalmanFilter::CorrectState() {
  if (H_IsScalar) {
    tmpM.Mul(x, H(0, 0));
  } else {
    tmpM.Mul(H, x);
  }
  tmpA.Sub(z, tmpM);
  tmpM.Mul(K, tmpA);
  x.Add(tmpM);
}

void TKalmanFilter::MeasurementUpdate() {
  if (!MeasurementInitialized) {
    Z_IsScalar = z.Length() == 1;
    H_IsScalar = H.Length() == 1 && !H.Complex();
    MeasurementInitialized = true;
  }
  const detail::MeasurementMatrix h{H, H_IsScalar};
  if (FitsStep()) {
    if (!Step().Gain(P, h, {R}, K)) FormGain();
    Step().CorrectState(h, K, z, x);
  } else {
    FormGain();
    CorrectState();
  }
  CorrectCovariance(h);
}

}  // namespace passband::AdaptiveFiltering
