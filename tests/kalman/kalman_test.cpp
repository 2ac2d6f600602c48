#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "passband/kalman/kalman.h"
#include "tests/test_support.h"

namespace passband::AdaptiveFiltering {
namespace {

using enum TMtxFloatPrecision;

const std::map<std::string, std::vector<double>>& References() {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/kalman/kalman_reference.inc"
  };
  return rows;
}

// Reads the matrices of a row one after the other.
class Reader {
 public:
  Reader(const std::vector<double>& numbers, TMtxFloatPrecision precision) : numbers_(numbers), precision_(precision) {}

  bool AtEnd() const { return place_ == numbers_.size(); }

  TMtx Next() {
    const auto rows = static_cast<std::int32_t>(numbers_[place_]);
    const auto cols = static_cast<std::int32_t>(numbers_[place_ + 1]);
    place_ += 2;
    TMtx m;
    m.Size(rows, cols, precision_);
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < cols; ++j) m.SetDefault(i, j, numbers_[place_++]);
    }
    return m;
  }

 private:
  const std::vector<double>& numbers_;
  std::size_t place_ = 0;
  TMtxFloatPrecision precision_;
};

double LargestDifference(const TMtx& a, const TMtx& b) {
  EXPECT_EQ(a.Rows(), b.Rows());
  EXPECT_EQ(a.Cols(), b.Cols());
  double largest = 0;
  for (std::int32_t i = 0; i < a.Rows(); ++i) {
    for (std::int32_t j = 0; j < a.Cols(); ++j) largest = std::max(largest, std::abs(a(i, j) - b(i, j)));
  }
  return largest;
}

// Runs the steps of a row; the elements are of the order of 1.
void RunSteps(TBaseKalmanFilter& filter, Reader& reader, double tolerance) {
  while (!reader.AtEnd()) {
    filter.z = reader.Next();
    filter.Update();
    EXPECT_LT(LargestDifference(filter.x, reader.Next()), tolerance);
    EXPECT_LT(LargestDifference(filter.P, reader.Next()), tolerance);
    EXPECT_LT(LargestDifference(filter.K, reader.Next()), tolerance);
    EXPECT_EQ(filter.P.IsDouble(), filter.A.IsDouble());
  }
}

void RunRow(const std::string& name, const std::vector<double>& numbers, TMtxFloatPrecision precision, bool joseph) {
  const double tolerance = 500 * test::Epsilon(precision);
  Reader reader(numbers, precision);
  if (name.starts_with("linear")) {
    TKalmanFilter filter;
    filter.SetJosephForm(joseph);
    for (TMtx* m : {&filter.A, &filter.H, &filter.P, &filter.Q, &filter.R, &filter.x, &filter.B}) *m = reader.Next();
    const TMtx u = reader.Next();
    if (name.find("driven") != std::string::npos) filter.SetOnDrivingFunction([&u](TMtx& to) { to.Copy(u); });
    RunSteps(filter, reader, tolerance);
    return;
  }
  TExtendedKalmanFilter filter;
  filter.SetJosephForm(joseph);
  if (name == "pendulum") {
    constexpr double kStep = 1.0 / 16;
    for (TMtx* m : {&filter.P, &filter.Q, &filter.R, &filter.x}) *m = reader.Next();
    filter.W.Eye(2, 2, filter.x);
    filter.V.SetFloatPrecision(precision);
    filter.A.Size(2, 2, precision);
    filter.H.Size(1, 2, precision);
    filter.SetOnGenerateProcess([&filter](TMtx& x) {
      const double angle = x(0, 0);
      const double rate = x(1, 0);
      filter.A.Eye(2, 2, x);
      filter.A.SetDefault(0, 1, kStep);
      filter.A.SetDefault(1, 0, -kStep * std::cos(angle));
      x.SetDefault(0, 0, angle + kStep * rate);
      x.SetDefault(1, 0, rate - kStep * std::sin(angle));
      filter.H.SetDefault(0, 0, std::cos(x(0, 0)));
      filter.H.SetDefault(0, 1, 0);
    });
    filter.SetOnGenerateMeasurement([&filter](TMtx& z) { z.SetDefault(0, 0, std::sin(filter.x(0, 0))); });
  } else {
    for (TMtx* m : {&filter.A, &filter.H, &filter.P, &filter.Q, &filter.R, &filter.x, &filter.W, &filter.V}) {
      *m = reader.Next();
    }
    filter.SetOnGenerateProcess([&filter](TMtx& x) { x.Mul(filter.A, x); });
    filter.SetOnGenerateMeasurement([&filter](TMtx& z) { z.Mul(filter.H, filter.x); });
  }
  RunSteps(filter, reader, tolerance);
}

TEST(Kalman, StepsMatchFiftyDigits) {
  for (const auto& [name, numbers] : References()) {
    for (const auto precision : {SingleReal, DoubleReal}) {
      for (const bool joseph : {false, true}) {
        SCOPED_TRACE(name + " " + test::Name(precision) + (joseph ? " Joseph" : ""));
        RunRow(name, numbers, precision, joseph);
      }
    }
  }
}

// Complex data take another way through the same formulas: a real problem with zero imaginary parts has the same result.
TEST(Kalman, ComplexDataFollowTheSameFormulas) {
  for (const std::string name : {"linear 3 2", "linear scalar 3"}) {
    SCOPED_TRACE(name);
    Reader reader(References().at(name), DoubleReal);
    TKalmanFilter filter;
    for (TMtx* m : {&filter.A, &filter.H, &filter.P, &filter.Q, &filter.R, &filter.x, &filter.B}) {
      *m = reader.Next();
      m->ExtendToComplex();
    }
    if (name == "linear scalar 3") filter.H.RealPart(filter.H);
    reader.Next();
    while (!reader.AtEnd()) {
      filter.z = reader.Next();
      filter.z.ExtendToComplex();
      filter.Update();
      TMtx part;
      for (const TMtx* m : {&filter.x, &filter.P, &filter.K}) {
        ASSERT_TRUE(m->Complex());
        part.RealPart(*m);
        EXPECT_LT(LargestDifference(part, reader.Next()), 1e-13);
      }
    }
  }
}

TMtx Scalar(double value) { return {1, 1, {value}}; }

void SetScalars(TBaseKalmanFilter& filter) {
  filter.x = Scalar(0);
  filter.z = Scalar(2);
  for (TMtx* m : {&filter.A, &filter.P, &filter.R}) *m = Scalar(1);
}

TEST(Kalman, DefaultsAndScalarSteps) {
  TBaseKalmanFilter base;
  EXPECT_EQ(base.Iter, 0);
  EXPECT_EQ(base.H(0, 0), 1.0);
  EXPECT_EQ(base.Q(0, 0), 0.0);
  EXPECT_EQ(base.R(0, 0), 0.0);
  EXPECT_EQ(base.x.Length() + base.z.Length() + base.A.Length() + base.K.Length() + base.P.Length(), 0);
  base.Update();

  TKalmanFilter filter;
  SetScalars(filter);
  filter.Update();
  EXPECT_EQ(filter.K(0, 0), 0.5);
  EXPECT_EQ(filter.x(0, 0), 1.0);
  EXPECT_EQ(filter.P(0, 0), 0.5);
  SetScalars(filter);
  filter.H = Scalar(2);
  filter.Update();
  EXPECT_EQ(filter.K(0, 0), 0.4);
  EXPECT_NEAR(filter.P(0, 0), 0.2, 1e-16);
}

// Two sensors without noise that see the same: S is singular, and the gain is the one of the least norm.
TEST(Kalman, SingularInnovationCovarianceGivesTheLeastGain) {
  TKalmanFilter filter;
  filter.x = TMtx(2, 1, {0, 0});
  filter.A.Eye(2, 2, filter.x);
  filter.P = TMtx(2, 2, {4, 2, 2, 3});
  filter.H = TMtx(2, 2, {1, 0, 1, 0});
  filter.R = TMtx(2, 2, {0, 0, 0, 0});
  filter.Q = filter.R;
  filter.z = TMtx(2, 1, {1, 1});
  filter.Update();
  EXPECT_LT(LargestDifference(filter.K, TMtx(2, 2, {0.5, 0.5, 0.25, 0.25})), 1e-15);
  EXPECT_LT(LargestDifference(filter.x, TMtx(2, 1, {1, 0.5})), 1e-15);
  EXPECT_LT(LargestDifference(filter.P, TMtx(2, 2, {0, 0, 0, 2})), 1e-14);
  // An R that is not symmetric is taken as it stands: K = P S^-1 with S = [2 1; 0 2].
  filter.P.Eye(2, 2, filter.P);
  filter.H.Eye(2, 2, filter.P);
  filter.R = TMtx(2, 2, {1, 1, 0, 1});
  filter.MeasurementUpdate();
  EXPECT_LT(LargestDifference(filter.K, TMtx(2, 2, {0.5, -0.25, 0, 0.5})), 1e-15);
  // The same in units whose squares leave the range of a double.
  for (const double unit : {0x1p-700, 0x1p700}) {
    filter.P.Eye(2, 2, filter.P);
    filter.P.Scale(unit);
    filter.R = TMtx(2, 2, {unit, unit, 0, unit});
    filter.MeasurementUpdate();
    EXPECT_LT(LargestDifference(filter.K, TMtx(2, 2, {0.5, -0.25, 0, 0.5})), 1e-15);
  }
}

TEST(Kalman, WhetherVIsOneIsFoundOutWhenASizeChanges) {
  TExtendedKalmanFilter filter;
  SetScalars(filter);
  filter.SetOnGenerateProcess([](TMtx&) {});
  filter.SetOnGenerateMeasurement([&filter](TMtx& z) { z.Copy(filter.x); });
  filter.Update();
  EXPECT_EQ(filter.K(0, 0), 0.5);
  filter.V.SetDefault(0, 0, 2.0);
  filter.P.SetVal(1);
  filter.Update();
  EXPECT_EQ(filter.K(0, 0), 0.5);
  filter.A = TMtx(2, 2, {1, 0, 0, 1});
  filter.A = Scalar(1);
  filter.P.SetVal(1);
  filter.Update();
  EXPECT_EQ(filter.K(0, 0), 0.2);  // 1 / (1 + 2 * 1 * 2)
}

TEST(Kalman, RefusalsOfTheLinearFilter) {
  TKalmanFilter filter;
  SetScalars(filter);
  filter.SetOnDrivingFunction([](TMtx& u) { u.Size(2, 1, DoubleReal).SetZero(); });
  EXPECT_RAISES(filter.Update(), ECoreError, "Driving vector u size does not match size of x.");
  EXPECT_EQ(filter.x(0, 0), 0.0);
  filter.SetOnDrivingFunction(nullptr);
  filter.Q.Size(2, 2, DoubleReal).SetZero();
  EXPECT_RAISES(filter.TimeUpdate(), ECoreError, "TMtx: the operands have shapes 1 x 1 and 2 x 2");
  filter.P.SetFloatPrecision(SingleReal);
  EXPECT_RAISES(filter.TimeUpdate(), ECoreError, "the operands have precisions double and single");
  filter.P = Scalar(std::nan(""));
  EXPECT_RAISES(filter.MeasurementUpdate(), ECoreError, "LQRSolve: an element is not finite");
  EXPECT_EQ(filter.x(0, 0), 0.0);
  SetScalars(filter);
  filter.Q = Scalar(0);
  filter.Update();
  EXPECT_EQ(filter.x(0, 0), 1.0);
}

TEST(Kalman, FailuresOfTheExtendedFilterNameTheirStage) {
  const std::string time = "TExtendedKalmanFilter.TimeUpdate computing ";
  const std::string measurement = "TExtendedKalmanFilter.MeasurementUpdate ";
  TExtendedKalmanFilter filter;
  SetScalars(filter);
  const auto expect_text = [&](const std::string& text) {
    SCOPED_TRACE(text);
    EXPECT_RAISES(filter.Update(), ECoreError, text.c_str());
  };
  expect_text(time + "OnGenerateProcess Extended Kalman filter requires OnGenerateProcess event to be assigned!");
  filter.SetOnGenerateProcess([](TMtx&) { throw std::bad_alloc(); });
  expect_text(time + "OnGenerateProcess " + std::bad_alloc().what());
  filter.SetOnGenerateProcess([](TMtx&) {});

  const auto expect = [&](TMtx& m, TMtx wrong, const std::string& text) {
    const TMtx right = m;
    m = std::move(wrong);
    expect_text(text);
    m = right;
  };
  filter.SetOnGenerateMeasurement([&filter](TMtx& z) { z.Copy(filter.x); });
  expect(filter.A, TMtx(2, 2, {1, 0, 0, 1}), time + "A(k)P(k-1)*A(k)^T gives error: Mul: 2 x 2 times 1 x 1");
  expect(filter.Q, TMtx(2, 2, {1, 0, 0, 1}), time + "W(k)*Q(k-1)*W(k)^T gives error: Mul: 1 x 1 times 2 x 2");
  expect(
      filter.W, TMtx(2, 1, {1, 1}),
      time + "A(k)P(k-1)*A(k)^T   +   W(k)*Q(k-1)*W(k)^T gives error: TMtx: the operands have shapes 1 x 1 and 2 x 2");
  expect(filter.H, TMtx(1, 2, {1, 1}), measurement + "computing H(k)*P(k)*H(k)^T gives error: Mul: 1 x 1 times 2 x 1");
  {
    const TMtx r = filter.R;
    filter.V = Scalar(2);
    expect(filter.R, TMtx(2, 2, {1, 0, 0, 1}),
           measurement + "computing V(k)*R(k)*V(k)^T gives error: Mul: 1 x 1 times 2 x 2");
    filter.V = Scalar(1);
  }
  expect(filter.R, TMtx(2, 2, {1, 0, 0, 1}),
         measurement + "computing H(k)*P(k)*H(k)^T   +   V(k)*R(k)*V(k)^T gives error: " +
             "TMtx: the operands have shapes 1 x 1 and 2 x 2");
  expect(filter.R, Scalar(INFINITY),
         measurement + "computing least square fit for K: LQRSolve: an element is not finite");
  const double before = filter.x(0, 0);
  filter.SetOnGenerateMeasurement([](TMtx&) { throw std::runtime_error("no sensor"); });
  expect_text(measurement + "calling OnGenerateMeasurement: no sensor");
  filter.SetOnGenerateMeasurement(nullptr);
  expect_text(measurement +
              "calling OnGenerateMeasurement: Extended Kalman filter requires OnGenerateMeasurement "
              "event to be assigned!");
  EXPECT_EQ(filter.x(0, 0), before);
  filter.SetOnGenerateMeasurement([](TMtx& z) { z.Copy(TMtx(2, 1, {1, 2})); });
  filter.z = TMtx(2, 1, {1, 1});
  expect_text(measurement + "computing: Mul: 1 x 1 times 2 x 1");
  // The covariance: a handler that breaks H behind the gain.
  filter.z = Scalar(1);
  filter.SetOnGenerateMeasurement([&filter](TMtx& z) {
    z.Copy(filter.x);
    filter.H = TMtx(2, 1, {1, 1});
  });
  expect_text(measurement + "computing P(k): Mul: 1 x 1 times 2 x 1");
}

double SmallestEigenvalueOf2x2(const TMtx& p) {
  const double mean = (p(0, 0) + p(1, 1)) / 2;
  return mean - std::hypot((p(0, 0) - p(1, 1)) / 2, (p(0, 1) + p(1, 0)) / 2);
}

// A million steps of an observable system, a position and its velocity: P stays symmetric and non-negative.
TEST(Kalman, AMillionSteps) {
  for (const auto precision : {SingleReal, DoubleReal}) {
    for (const bool joseph : {false, true}) {
      TKalmanFilter filter;
      filter.SetJosephForm(joseph);
      filter.x.Size(2, 1, precision).SetZero();
      filter.A.Eye(2, 2, filter.x);
      filter.A.SetDefault(0, 1, 0.001);
      filter.P.Eye(2, 2, filter.x);
      filter.Q.Size(2, 2, precision).SetZero();
      filter.Q.SetDefault(1, 1, 1e-6);
      filter.R.Size(1, 1, precision).SetVal(0.5);
      filter.H.Size(1, 2, precision).SetZero();
      filter.H.SetDefault(0, 0, 1);
      filter.z.Size(1, 1, precision).SetZero();
      double worst_asymmetry = 0;
      double smallest = 0;
      for (std::int64_t step = 0; step < 1'000'000; ++step) {
        filter.z.SetDefault(0, 0, static_cast<double>(step * 7919 % 1000) / 500 - 1);
        filter.Update();
        worst_asymmetry =
            std::max(worst_asymmetry, std::abs(filter.P(0, 1) - filter.P(1, 0)) / std::abs(filter.P(0, 1)));
        smallest = std::min(smallest, SmallestEigenvalueOf2x2(filter.P));
      }
      EXPECT_LT(worst_asymmetry, joseph ? 1e-300 : 1e-6) << test::Name(precision);
      EXPECT_GE(smallest, 0.0) << test::Name(precision);
    }
  }
}

}  // namespace
}  // namespace passband::AdaptiveFiltering
