#include "passband/kalman/extended_kalman_filter.h"

#include <array>
#include <exception>
#include <string>
#include <string_view>

#include "passband/foundation/exceptions.h"
#include "passband/kalman/kalman_step_internal.h"

namespace passband::AdaptiveFiltering {
namespace {

using detail::Fits;

// The texts of the steps, by stage.
constexpr std::array<std::string_view, 4> kTimeStages{
    "TExtendedKalmanFilter.TimeUpdate computing OnGenerateProcess ",
    "TExtendedKalmanFilter.TimeUpdate computing A(k)P(k-1)*A(k)^T gives error: ",
    "TExtendedKalmanFilter.TimeUpdate computing W(k)*Q(k-1)*W(k)^T gives error: ",
    "TExtendedKalmanFilter.TimeUpdate computing A(k)P(k-1)*A(k)^T   +   W(k)*Q(k-1)*W(k)^T gives error: "};
constexpr std::array<std::string_view, 7> kMeasurementStages{
    "TExtendedKalmanFilter.MeasurementUpdate computing H(k)*P(k)*H(k)^T gives error: ",
    "TExtendedKalmanFilter.MeasurementUpdate computing V(k)*R(k)*V(k)^T gives error: ",
    "TExtendedKalmanFilter.MeasurementUpdate computing H(k)*P(k)*H(k)^T   +   V(k)*R(k)*V(k)^T gives error: ",
    "TExtendedKalmanFilter.MeasurementUpdate computing least square fit for K: ",
    "TExtendedKalmanFilter.MeasurementUpdate calling OnGenerateMeasurement: ",
    "TExtendedKalmanFilter.MeasurementUpdate computing: ",
    "TExtendedKalmanFilter.MeasurementUpdate computing P(k): "};

// Runs the stages, which count themselves, and names the one that failed.
template <std::size_t count, class F>
void RunStages(const std::array<std::string_view, count>& texts, F stages) {
  int stage = 0;
  try {
    stages(stage);
  } catch (const std::exception& error) {
    ERaise(std::string(texts[static_cast<std::size_t>(stage)]) + error.what());
  }
}

// V N V^T, with one element f of N f V V^T.
void FormNoise(const TMtx& jacobian, const TMtx& covariance, bool scalar, TMtx& work, TMtx& noise) {
  if (scalar) {
    noise.Mul(jacobian, jacobian, TMtxOperation::None, TMtxOperation::Transposed);
    detail::ScaleByElement(noise, covariance);
  } else {
    work.Mul(jacobian, covariance);
    noise.Mul(work, jacobian, TMtxOperation::None, TMtxOperation::Transposed);
  }
}

}  // namespace

TExtendedKalmanFilter::TExtendedKalmanFilter() {
  for (TMtx* jacobian : {&W, &V}) {
    jacobian->Size(1, 1, TMtxFloatPrecision::DoubleReal);
    jacobian->SetVal(1.0);
    Watch(*jacobian);
  }
}

TExtendedKalmanFilter::~TExtendedKalmanFilter() = default;

void TExtendedKalmanFilter::PredictCovariance(int& stage) {
  const std::int32_t n = P.Rows();
  const TMtxFloatPrecision precision = P.FloatPrecision();
  const detail::Noise noise{Q, &W, Q_IsScalar};
  stage = 1;
  if (!P.Complex() && Fits(P, n, n, precision) && Fits(A, n, n, precision) && Fits(noise, n, precision)) {
    Step().PredictCovariance(A, noise, P);
    return;
  }
  tmpM.Mul(A, P);
  P.Mul(tmpM, A, TMtxOperation::None, TMtxOperation::Transposed);
  stage = 2;
  FormNoise(W, Q, Q_IsScalar, tmpM, tmpA);
  stage = 3;
  P.Add(tmpA);
}

void TExtendedKalmanFilter::TimeUpdate() {
  RunStages(kTimeStages, [this](int& stage) {
    if (!TimeInitialized) {
      Q_IsScalar = Q.Length() == 1;
      TimeInitialized = true;
    }
    if (!FOnGenerateProcess) ERaise("Extended Kalman filter requires OnGenerateProcess event to be assigned!");
    FOnGenerateProcess(x);
    PredictCovariance(stage);
  });
}

// K = P H^T S^-1, as the solution of S^T K^T = H P^T where Cholesky's decomposition does not apply.
void TExtendedKalmanFilter::FormGain(int& stage) {
  const std::int32_t n = P.Rows();
  const std::int32_t m = H.Rows();
  const TMtxFloatPrecision precision = P.FloatPrecision();
  const detail::Noise noise = V_IsOne ? detail::Noise{R} : detail::Noise{R, &V, R_IsScalar};
  if (!P.Complex() && n > 0 && m > 0 && Fits(P, n, n, precision) && Fits(H, m, n, precision) &&
      Fits(noise, m, precision) && Step().Gain(P, {H}, noise, K)) {
    return;
  }
  tmpM.Mul(P, H, TMtxOperation::None, TMtxOperation::Transposed);
  tmpA.Mul(H, tmpM);
  if (V_IsOne) {
    stage = 2;
    tmpA.Add(R);
  } else {
    stage = 1;
    FormNoise(V, R, R_IsScalar, tmpB, tmpR);
    stage = 2;
    tmpA.Add(tmpR);
  }
  stage = 3;
  tmpM.Transp();
  tmpA.LQRSolve(tmpM, K, nullptr, TMtxOperation::Transposed);
  K.Transp();
}

// tmpM = h(x).
void TExtendedKalmanFilter::CallMeasurement() {
  tmpM.Size(z);
  if (!FOnGenerateMeasurement) ERaise("Extended Kalman filter requires OnGenerateMeasurement event to be assigned!");
  FOnGenerateMeasurement(tmpM);
}

// x = x + K (z - tmpM).
void TExtendedKalmanFilter::CorrectState() {
  const TMtxFloatPrecision precision = x.FloatPrecision();
  const std::int32_t n = K.Rows();
  const std::int32_t m = K.Cols();
  if (!x.Complex() && Fits(x, n, 1, precision) && Fits(z, m, 1, precision) && Fits(tmpM, m, 1, precision) &&
      Fits(K, n, m, precision)) {
    Step().CorrectState(tmpM, K, z, x);
  } else if (Z_IsScalar && X_IsScalar) {
    x.SetDefault(0, 0, x(0, 0) + K(0, 0) * (z(0, 0) - tmpM(0, 0)));
  } else if (Z_IsScalar) {
    x.AddScaled(K, z(0, 0) - tmpM(0, 0));
  } else {
    tmpA.Sub(z, tmpM);
    tmpM.Mul(K, tmpA);
    if (X_IsScalar) {
      x.SetDefault(0, 0, x(0, 0) + tmpM(0, 0));
    } else {
      x.Add(tmpM);
    }
  }
}

void TExtendedKalmanFilter::MeasurementUpdate() {
  RunStages(kMeasurementStages, [this](int& stage) {
    if (!MeasurementInitialized) {
      V_IsOne = V.Length() == 1 && detail::ElementOf(V) == TCplx(1.0);
      Z_IsScalar = z.Length() == 1 && !z.Complex();
      X_IsScalar = x.Length() == 1 && !x.Complex();
      R_IsScalar = R.Length() == 1;
      MeasurementInitialized = true;
    }
    FormGain(stage);
    stage = 4;
    CallMeasurement();
    stage = 5;
    CorrectState();
    stage = 6;
    CorrectCovariance({H});
  });
}

}  // namespace passband::AdaptiveFiltering
