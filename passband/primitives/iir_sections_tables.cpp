// The tables of the grouped form.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "passband/primitives/iir_sections_internal.h"

namespace passband::primitives::detail {
namespace {

// 64 bits of mantissa are enough: the tables are rounded to 53, the remainder of A^8 needs a few digits only.
using Wide = long double;

constexpr double kFarthestPole = 2;

// a - b c with b c exact.
Wide MinusProduct(double a, double b, double c) {
  const double product = b * c;
  const double remainder = std::fma(b, c, -product);
  return (static_cast<Wide>(a) - static_cast<Wide>(product)) - static_cast<Wide>(remainder);
}

// A section as s' = A s + (B, 0) x, y = C s + D x, in a basis in which A is a rotation and contraction for complex
// poles, symmetric for real ones that differ, and triangular but for a small element for (nearly) equal ones.
struct SectionInStates {
  Wide a[2][2];
  Wide b;
  Wide c[2];
  Wide d;
};

// The smallest power of two >= x > 0; 1 for everything else.
Wide PowerOfTwoFrom(Wide x) {
  if (!(x > 0) || !std::isfinite(x)) return 1;
  int exponent = 0;
  const Wide mantissa = std::frexp(x, &exponent);
  return std::ldexp(Wide{1}, mantissa == Wide{0.5} ? exponent - 1 : exponent);
}

bool InStates(const IirSection& section, SectionInStates& result) {
  const double sigma = -section.a1 / 2;
  const Wide d = MinusProduct(section.a2, sigma, sigma);
  const Wide rho = std::sqrt(std::abs(d));
  const Wide farthest = d >= 0 ? std::sqrt(static_cast<Wide>(section.a2)) : std::abs(static_cast<Wide>(sigma)) + rho;
  if (!(farthest <= Wide{kFarthestPole})) return false;
  constexpr Wide kLeastGamma = 0x1p-20L;  // for equal poles on the unit circle
  const Wide gamma = std::max({rho, (1 - farthest) / 2, kLeastGamma});
  const Wide c1 = MinusProduct(section.b1, section.b0, section.a1);
  const Wide c2 = (MinusProduct(section.b2, section.b0, section.a2) + static_cast<Wide>(sigma) * c1) / gamma;
  const Wide scale = PowerOfTwoFrom(std::max(std::abs(c1), std::abs(c2)));
  result = {.a = {{static_cast<Wide>(sigma), -d / gamma}, {gamma, static_cast<Wide>(sigma)}},
            .b = scale,
            .c = {c1 / scale, c2 / scale},
            .d = static_cast<Wide>(section.b0)};
  return true;
}

template <std::size_t kStates>
struct System {
  using Vector = std::array<Wide, kStates>;
  using Matrix = std::array<Vector, kStates>;
  Matrix a{};
  Vector b{};
  Vector c{};
  Wide d = 1;

  // Puts a section behind the sections so far; its states begin at `k`.
  void Append(const SectionInStates& section, std::size_t k) {
    a[k][k] = section.a[0][0];
    a[k][k + 1] = section.a[0][1];
    a[k + 1][k] = section.a[1][0];
    a[k + 1][k + 1] = section.a[1][1];
    for (std::size_t i = 0; i < k; ++i) {
      a[k][i] = section.b * c[i];
      c[i] *= section.d;
    }
    b[k] = section.b * d;
    c[k] = section.c[0];
    c[k + 1] = section.c[1];
    d *= section.d;
  }

  static Wide Dot(const Vector& x, const Vector& y) {
    Wide sum = 0;
    for (std::size_t i = 0; i < kStates; ++i) sum += x[i] * y[i];
    return sum;
  }
  static Vector Times(const Matrix& matrix, const Vector& x) {
    Vector y;
    for (std::size_t i = 0; i < kStates; ++i) y[i] = Dot(matrix[i], x);
    return y;
  }
  static Vector Times(const Vector& x, const Matrix& matrix) {
    Vector y{};
    for (std::size_t i = 0; i < kStates; ++i) {
      for (std::size_t k = 0; k < kStates; ++k) y[k] += x[i] * matrix[i][k];
    }
    return y;
  }
  static Matrix Squared(const Matrix& matrix) {
    Matrix y;
    for (std::size_t i = 0; i < kStates; ++i) y[i] = Times(matrix[i], matrix);
    return y;
  }
};

// Elements that do not count beside the largest one of their block become 0, lest products with them become subnormal
// numbers. False when the block holds NaN or infinity.
bool Settle(double* block, std::size_t rows, std::size_t stride, std::size_t columns) {
  constexpr double kNegligible = 0x1p-120;
  const auto for_all = [&](auto act) {
    for (std::size_t i = 0; i < rows; ++i) {
      for (std::size_t k = 0; k < columns; ++k) act(block[i * stride + k]);
    }
  };
  bool finite = true;
  double largest = 0;
  for_all([&](double v) {
    finite = finite && std::isfinite(v);
    largest = std::max(largest, std::abs(v));
  });
  for_all([&](double& v) { v = std::abs(v) < kNegligible * largest ? 0.0 : v; });
  return finite;
}

template <std::size_t kStates>
bool Settle(IirBundle<kStates>& bundle) {
  bool finite = std::isfinite(bundle.gain) && Settle(bundle.direct[0], kIirGroup - 1, kIirGroup, kIirGroup);
  for (std::size_t k = 0; k < kStates; k += 2) {
    finite = finite && Settle(bundle.past[k], 2, kIirGroup, kIirGroup) &&
             Settle(bundle.inflow[0] + k, kIirGroup, kStates, 2) && Settle(bundle.rest[0] + k, 2, kStates, 2);
    for (std::size_t i = 0; i < kStates; i += 2) finite = finite && Settle(bundle.power[k] + i, 2, kStates, 2);
  }
  return finite;
}

template <std::size_t kStates>
void FillPower(const typename System<kStates>::Matrix& power, IirBundle<kStates>& bundle) {
  for (std::size_t k = 0; k < kStates; ++k) {
    for (std::size_t i = 0; i < kStates; ++i) bundle.power[k][i] = static_cast<double>(power[i][k]);
  }
  for (std::size_t i = 0; i < kStates; ++i) {
    for (std::size_t neighbour = 0; neighbour < 2; ++neighbour) {
      const std::size_t k = i ^ neighbour;
      bundle.rest[neighbour][i] = static_cast<double>(power[i][k] - static_cast<Wide>(bundle.power[k][i]));
    }
  }
}

}  // namespace

template <std::size_t kStates>
bool MakeIirBundle(const IirSection* sections, std::size_t count, IirBundle<kStates>& bundle) noexcept {
  System<kStates> system;
  for (std::size_t i = 0; i < count; ++i) {
    SectionInStates section{};
    if (!InStates(sections[i], section)) return false;
    system.Append(section, 2 * i);
  }
  auto row = system.c;     // C A^i
  auto column = system.b;  // A^i B
  for (std::size_t i = 0; i < kIirGroup; ++i) {
    for (std::size_t k = 0; k < kStates; ++k) {
      bundle.past[k][i] = static_cast<double>(row[k]);
      bundle.inflow[kIirGroup - 1 - i][k] = static_cast<double>(column[k]);
    }
    if (i + 1 < kIirGroup) {
      const auto h = static_cast<double>(system.Dot(system.c, column));
      for (std::size_t j = 0; j + 1 < kIirGroup; ++j) {
        if (i + 1 + j < kIirGroup) bundle.direct[j][i + 1 + j] = h;
        if (i <= j) bundle.direct[j][i] = 0;
      }
    }
    row = system.Times(row, system.a);
    column = system.Times(system.a, column);
  }
  FillPower<kStates>(system.Squared(system.Squared(system.Squared(system.a))), bundle);
  bundle.gain = static_cast<double>(system.d);
  return Settle(bundle);
}

template bool MakeIirBundle(const IirSection*, std::size_t, IirBundle<2>&) noexcept;
template bool MakeIirBundle(const IirSection*, std::size_t, IirBundle<4>&) noexcept;
template bool MakeIirBundle(const IirSection*, std::size_t, IirBundle<8>&) noexcept;

}  // namespace passband::primitives::detail
