// What all Kalman filters share: their matrices, and one step of prediction and correction.
#pragma once

#include <cstdint>
#include <memory>

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"

namespace passband::AdaptiveFiltering {

namespace detail {
class KalmanStep;
struct MeasurementMatrix;
}  // namespace detail

/// The matrices of a discrete Kalman filter, and its step. Its own updates do nothing; the filters derived from it, or
/// those that a host derives, override them.
///
/// With n states and m measurements: state x (n x 1), measurement z (m x 1), transition A (n x n), measurement matrix H
/// (m x n), gain K (n x m), and the covariances P of the error (n x n), Q of the process noise and R of the measurement
/// noise (m x m). `H` starts as 1 x 1 holding 1, `Q` and `R` as 1 x 1 holding 0, all others empty. The matrices have one
/// precision, single or double; whatever it is, a step on real data computes in double and rounds what it stores.
///
/// Matrices of the wrong shape or of mixed precisions are refused in the words of the matrix operations of `TMtx`; steps
/// that were complete by then keep their results, and the filter stays usable. A step on real data allocates nothing once
/// it has run with the same shapes, unless the innovation covariance is not symmetric positive definite; complex data
/// allocate. A step costs O(n^3 + n^2 m + n m^2 + m^3). An object is used by one thread at a time.
/// Literature: Grewal, Andrews, "Kalman Filtering: Theory and Practice", 4th ed., 2015, chapters 5 and 8.
class PASSBAND_EXPORT TBaseKalmanFilter {
 public:
  TBaseKalmanFilter();
  TBaseKalmanFilter(const TBaseKalmanFilter&) = delete;  // the notifications of the matrices belong to this object
  TBaseKalmanFilter& operator=(const TBaseKalmanFilter&) = delete;
  virtual ~TBaseKalmanFilter();

  virtual void TimeUpdate();         ///< prediction
  virtual void MeasurementUpdate();  ///< correction by `z`
  /// `TimeUpdate`, then `MeasurementUpdate`.
  void Update();

  /// Off (at first), P becomes (I - K H) P, which is right for the optimal gain only and which rounding makes a little
  /// asymmetric. On, P becomes the Joseph form (I - K H) P (I - K H)^T + K R' K^T with the noise covariance R' that the
  /// gain was computed with, then its symmetric part: it stays non-negative whatever the rounding, for two
  /// more products of n x n matrices. Complex data keep the plain form.
  /// Literature: Bucy, Joseph, "Filtering for Stochastic Processes with Applications to Guidance", 1968.
  void SetJosephForm(bool On) { joseph_form_ = On; }
  bool JosephForm() const { return joseph_form_; }

  std::int32_t Iter = 0;  ///< a step counter of the caller's; the updates leave it alone
  TMtx x;                 ///< state estimate
  TMtx z;                 ///< measurement
  TMtx A;                 ///< state transition, or its Jacobian
  TMtx H;                 ///< measurement matrix, or the Jacobian of the measurement
  TMtx K;                 ///< gain
  TMtx P;                 ///< error covariance
  TMtx Q;                 ///< process noise covariance
  TMtx R;                 ///< measurement noise covariance

 protected:
  /// Called when a matrix changes its size: the flags below are no longer valid.
  void OnSize(const TMtx& Sender);
  /// Has `OnSize` called for a matrix of a derived filter.
  void Watch(TMtx& Matrix);

  // What the updates found out about the shapes, valid as long as no matrix changes its size.
  bool Z_IsScalar = false;  ///< z has one element
  bool X_IsScalar = false;  ///< x has one real element (extended filter)
  bool R_IsScalar = false;  ///< R has one element (extended filter)
  bool Q_IsScalar = false;  ///< Q has one element
  bool H_IsScalar = false;  ///< H has one real element
  bool TimeInitialized = false;
  bool MeasurementInitialized = false;
  TMtx tmpV;  ///< work
  TMtx tmpS;  ///< work
  TMtx tmpM;  ///< work
  TMtx tmpA;  ///< work

  /// The step on real matrices that fit each other.
  detail::KalmanStep& Step() { return *step_; }
  /// P = (I - K H) P, or its Joseph form.
  void CorrectCovariance(const detail::MeasurementMatrix& h);

 private:
  bool joseph_form_ = false;
  std::unique_ptr<detail::KalmanStep> step_;
};

}  // namespace passband::AdaptiveFiltering
