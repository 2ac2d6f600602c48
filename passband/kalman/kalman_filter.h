// The linear Kalman filter.
#pragma once

#include <functional>

#include "passband/foundation/export.h"
#include "passband/kalman/base_kalman_filter.h"
#include "passband/vector_core/mtx.h"

namespace passband::AdaptiveFiltering {

/// The Kalman filter of x[k] = A x[k-1] + B u[k] + w, z[k] = H x[k] + v with noise covariances Q of w and R of v.
///
/// The host sizes and fills `x`, `A`, `H`, `P`, `Q` and `R` once, and sets `z` before each correction. A matrix `H` with
/// one real element h stands for h times the identity, so that m = n; a matrix `B` with one element b for b times the
/// identity.
///
/// Failures are those of the matrix operations, for example "Mul: 2 x 2 times 3 x 1", "TMtx: the operands have shapes
/// 1 x 1 and 2 x 2" or "LQRSolve: an element is not finite", and the one of `TimeUpdate`.
class PASSBAND_EXPORT TKalmanFilter : public TBaseKalmanFilter {
 public:
  TKalmanFilter();
  ~TKalmanFilter() override;

  /// x = A x, with a driving function x = A x + B u, then P = A P A^T + Q. The driving function runs once A x is known;
  /// "Driving vector u size does not match size of x." when it leaves `u` with other rows and columns than `x` has, and
  /// nothing has changed then.
  void TimeUpdate() override;
  /// K = P H^T S^-1 with S = H P H^T + R, x = x + K (z - H x), P = (I - K H) P. The gain comes from Cholesky's
  /// decomposition of S; where S is not symmetric positive definite it is the least-squares solution of the least norm.
  void MeasurementUpdate() override;

  /// Called in each prediction with `u`, which it sizes like `x` and fills; empty: no driving input.
  void SetOnDrivingFunction(std::function<void(TMtx&)> Handler) { FOnDrivingFunction = std::move(Handler); }
  const std::function<void(TMtx&)>& OnDrivingFunction() const { return FOnDrivingFunction; }

  TMtx B;  ///< input matrix

 protected:
  std::function<void(TMtx&)> FOnDrivingFunction;
  TMtx u;                   ///< driving input
  bool B_IsScalar = false;  ///< B has one element

 private:
  void DriveState();
  void PredictCovariance();
  bool FitsStep() const;
  void FormGain();
  void CorrectState();
};

}  // namespace passband::AdaptiveFiltering
