// The extended Kalman filter.
#pragma once

#include <functional>

#include "passband/foundation/export.h"
#include "passband/kalman/base_kalman_filter.h"
#include "passband/vector_core/mtx.h"

namespace passband::AdaptiveFiltering {

/// A handler that replaces the state `x` by the propagated one, f(x).
using TKalmanProcessEvent = std::function<void(TMtx& x)>;
/// A handler that fills a matrix sized like `z` with the predicted measurement h(x).
using TKalmanMeasurementEvent = std::function<void(TMtx& z)>;

/// The Kalman filter of the non-linear system x[k] = f(x[k-1], w), z[k] = h(x[k], v), linearised at the estimate.
///
/// Handlers compute f and h; the host sets the Jacobians `A` of f and `H` of h with respect to the state, `W` (n x p) of
/// f with respect to the process noise of covariance `Q` (p x p) and `V` (m x r) of h with respect to the measurement
/// noise of covariance `R` (r x r) for the current step, for example in the handlers. A single element of `Q` or `R`
/// stands for itself times the identity. `W` and `V` start as 1 x 1 holding 1; whether `V` is that is found out when the
/// size of a matrix has changed, not when a value has.
///
/// Every failure inside an update, a handler's included, is raised again as `ECoreError`: the text that names the step,
/// followed at once by the text of the failure. Complete steps keep their results.
class PASSBAND_EXPORT TExtendedKalmanFilter : public TBaseKalmanFilter {
 public:
  TExtendedKalmanFilter();
  ~TExtendedKalmanFilter() override;

  /// x = f(x), P = A P A^T + W Q W^T. The texts of its steps:
  ///
  ///     "TExtendedKalmanFilter.TimeUpdate computing OnGenerateProcess "
  ///     "TExtendedKalmanFilter.TimeUpdate computing A(k)P(k-1)*A(k)^T gives error: "
  ///     "TExtendedKalmanFilter.TimeUpdate computing W(k)*Q(k-1)*W(k)^T gives error: "
  ///     "TExtendedKalmanFilter.TimeUpdate computing A(k)P(k-1)*A(k)^T   +   W(k)*Q(k-1)*W(k)^T gives error: "
  ///
  /// The first is followed by "Extended Kalman filter requires OnGenerateProcess event to be assigned!" when the handler
  /// is missing.
  void TimeUpdate() override;
  /// K = P H^T S^-1 with S = H P H^T + V R V^T (with `V` one element 1: + R), x = x + K (z - h(x)), P = (I - K H) P. The
  /// gain as in `TKalmanFilter`. The texts of its steps:
  ///
  ///     "TExtendedKalmanFilter.MeasurementUpdate computing H(k)*P(k)*H(k)^T gives error: "
  ///     "TExtendedKalmanFilter.MeasurementUpdate computing V(k)*R(k)*V(k)^T gives error: "
  ///     "TExtendedKalmanFilter.MeasurementUpdate computing H(k)*P(k)*H(k)^T   +   V(k)*R(k)*V(k)^T gives error: "
  ///     "TExtendedKalmanFilter.MeasurementUpdate computing least square fit for K: "
  ///     "TExtendedKalmanFilter.MeasurementUpdate calling OnGenerateMeasurement: "
  ///     "TExtendedKalmanFilter.MeasurementUpdate computing: " (the state)
  ///     "TExtendedKalmanFilter.MeasurementUpdate computing P(k): "
  ///
  /// The fifth is followed by "Extended Kalman filter requires OnGenerateMeasurement event to be assigned!" when the
  /// handler is missing.
  void MeasurementUpdate() override;

  /// Replaces the state by the propagated one; required.
  void SetOnGenerateProcess(TKalmanProcessEvent Handler) { FOnGenerateProcess = std::move(Handler); }
  const TKalmanProcessEvent& OnGenerateProcess() const { return FOnGenerateProcess; }
  /// Fills the predicted measurement; required.
  void SetOnGenerateMeasurement(TKalmanMeasurementEvent Handler) { FOnGenerateMeasurement = std::move(Handler); }
  const TKalmanMeasurementEvent& OnGenerateMeasurement() const { return FOnGenerateMeasurement; }

  TMtx W;  ///< Jacobian of the process with respect to its noise
  TMtx V;  ///< Jacobian of the measurement with respect to its noise

 protected:
  bool V_IsOne = false;  ///< V is a single element 1
  TMtx tmpR;             ///< work
  TMtx tmpB;             ///< work
  TKalmanMeasurementEvent FOnGenerateMeasurement;
  TKalmanProcessEvent FOnGenerateProcess;

 private:
  void PredictCovariance(int& stage);
  void FormGain(int& stage);
  void CallMeasurement();
  void CorrectState();
};

}  // namespace passband::AdaptiveFiltering
