#include "passband/kalman/base_kalman_filter.h"

#include "passband/kalman/kalman_step_internal.h"

namespace passband::AdaptiveFiltering {

TBaseKalmanFilter::TBaseKalmanFilter() : step_(std::make_unique<detail::KalmanStep>()) {
  H.Size(1, 1, TMtxFloatPrecision::DoubleReal);
  H.SetVal(1.0);
  for (TMtx* noise : {&Q, &R}) {
    noise->Size(1, 1, TMtxFloatPrecision::DoubleReal);
    noise->SetZero();
  }
  for (TMtx* matrix : {&x, &z, &A, &H, &P, &Q, &R}) Watch(*matrix);
}

TBaseKalmanFilter::~TBaseKalmanFilter() = default;

void TBaseKalmanFilter::TimeUpdate() {}

void TBaseKalmanFilter::MeasurementUpdate() {}

void TBaseKalmanFilter::Update() {
  TimeUpdate();
  MeasurementUpdate();
}

void TBaseKalmanFilter::OnSize(const TMtx& /*Sender*/) {
  TimeInitialized = false;
  MeasurementInitialized = false;
}

void TBaseKalmanFilter::Watch(TMtx& Matrix) {
  Matrix.setOnSetSize([this, &Matrix] { OnSize(Matrix); });
}

void TBaseKalmanFilter::CorrectCovariance(const detail::MeasurementMatrix& h) {
  using detail::Fits;
  const std::int32_t n = K.Rows();
  const std::int32_t m = K.Cols();
  const TMtxFloatPrecision precision = P.FloatPrecision();
  const bool fits_h = h.scalar ? n == m && Fits(H, 1, 1, precision) : Fits(H, m, n, precision);
  if (!P.Complex() && fits_h && Fits(K, n, m, precision) && Fits(P, n, n, precision)) {
    if (joseph_form_) {
      step_->CorrectCovarianceByJoseph(h, K, P);
    } else {
      step_->CorrectCovariance(h, K, P);
    }
    return;
  }
  if (h.scalar) {
    tmpM.Mul(K, H(0, 0));
  } else {
    tmpM.Mul(K, H);
  }
  tmpA.Eye(tmpM.Rows(), tmpM.Cols(), tmpM);
  tmpA.Sub(tmpM);
  tmpM.Mul(tmpA, P);
  P.Copy(tmpM);
}

}  // namespace passband::AdaptiveFiltering
