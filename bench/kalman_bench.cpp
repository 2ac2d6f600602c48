// One step of the linear Kalman filter beside the same step in Eigen with matrices of run-time sizes.
#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <cstdint>
#include <string>

#include "bench/rows.h"
#include "passband/kalman/kalman.h"

namespace {

using Eigen::MatrixXd;
using Eigen::VectorXd;
using passband::TMtx;
using passband::AdaptiveFiltering::TKalmanFilter;

constexpr int kSteps = 200;  // in one call

// Chains of a position and its velocity; every other state is measured.
MatrixXd Transition(int n) {
  MatrixXd a = MatrixXd::Identity(n, n);
  for (int i = 0; i + 1 < n; ++i) a(i, i + 1) = 0.01;
  return a;
}

MatrixXd Measured(int n) {
  MatrixXd h = MatrixXd::Zero(n / 2, n);
  for (int i = 0; i < n / 2; ++i) h(i, 2 * i) = 1;
  return h;
}

void Assign(TMtx& m, const MatrixXd& values) {
  m.Size(static_cast<std::int32_t>(values.rows()), static_cast<std::int32_t>(values.cols()), false, true);
  for (int i = 0; i < values.rows(); ++i) {
    for (int j = 0; j < values.cols(); ++j) m.SetDefault(i, j, values(i, j));
  }
}

struct EigenFilter {
  MatrixXd a, h, p, q, r, k, s;
  VectorXd x, z;

  void Update() {
    x = a * x;
    p = a * p * a.transpose() + q;
    s = h * p * h.transpose() + r;
    k = s.llt().solve(h * p.transpose()).transpose();
    x += k * (z - h * x);
    p = (MatrixXd::Identity(x.size(), x.size()) - k * h) * p;
  }
};

void Row(passband::bench::Rows& rows, int n, double goal) {
  const int m = n / 2;
  EigenFilter peer{Transition(n),
                   Measured(n),
                   MatrixXd::Identity(n, n),
                   1e-4 * MatrixXd::Identity(n, n),
                   0.1 * MatrixXd::Identity(m, m),
                   {},
                   {},
                   VectorXd::Zero(n),
                   VectorXd::Ones(m)};
  TKalmanFilter ours;
  Assign(ours.A, peer.a);
  Assign(ours.H, peer.h);
  Assign(ours.P, peer.p);
  Assign(ours.Q, peer.q);
  Assign(ours.R, peer.r);
  Assign(ours.x, peer.x);
  Assign(ours.z, peer.z);
  rows.Measure("kalman_step", "states=" + std::to_string(n) + ";measurements=" + std::to_string(m),
               {.samples = kSteps, .goal = goal},
               [&] {
                 for (int step = 0; step < kSteps; ++step) ours.Update();
               },
               {{"eigen", [&] {
                   for (int step = 0; step < kSteps; ++step) peer.Update();
                 }}});
}

}  // namespace

int main(int argc, char** argv) {
  passband::bench::Rows rows(argc, argv);
  Row(rows, 2, 0.7);
  Row(rows, 4, 0.7);
  Row(rows, 6, 0.7);
  Row(rows, 8, 0.8);
  return 0;
}
