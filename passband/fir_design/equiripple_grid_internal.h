// The dense grid of frequencies on which an equiripple design is optimal, reduced to an approximation by cosines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "passband/fir_design/equiripple_places_internal.h"
#include "passband/foundation/enumerations.h"

namespace passband::OptimalFir::detail {

/// The bands of a design.
struct BandPlan {
  std::span<const double> edges;  ///< two for each band, in cycles per sample, ascending, 0 .. 0.5
  std::span<const double> gains;
  std::span<const double> weights;
  TRemezType type = TRemezType::rmtBandPass;
  bool fixed_weights = false;
  std::int32_t density = 16;  ///< GridDensity

  bool Antisymmetric() const { return type != TRemezType::rmtBandPass; }
  /// Cosines that the amplitude of a filter with so many taps is made of.
  std::size_t CosineCount(std::int32_t length) const;
  /// The length of the same parity that has so many cosines.
  std::int32_t LengthOf(std::size_t cosines, bool odd) const;
};

/// The units of amplitudes and of weights in the reduced problem.
struct Units {
  Wide amplitude;
  Wide weight;

  /// `fs` is the sampling frequency; with 1 both are powers of two.
  Units(const BandPlan& bands, double fs);
};

/// The frequencies of a design of one length.
struct GridPlan {
  double spacing = 0;          ///< distance to aim at, in cycles per sample
  std::vector<double> edges;   ///< of the bands, moved off 0 and 0.5 where an antisymmetric amplitude is 0
  std::vector<double> counts;  ///< points of each band, as they come: perhaps below 2, or infinite

  GridPlan(const BandPlan& bands, std::int32_t length);
};

/// Points of the reduced problem, ordered by frequency: |weight (desired - P(x))| is to be small, P a sum of cosines,
/// x = hi + lo = cos(2 pi f). Arrays side by side.
struct PointSet {
  std::vector<std::int64_t> positions;
  std::vector<double> hi;
  std::vector<double> lo;
  std::vector<double> desired;
  std::vector<double> weight;

  std::size_t Size() const { return positions.size(); }
  primitives::Places Places() const { return {hi.data(), lo.data(), static_cast<std::int32_t>(hi.size())}; }
};

/// The amplitude of a filter is c(f) P(f), P(f) = sum of alpha[k] cos(2 pi k f) and c a factor that its symmetry fixes:
/// 1, cos(pi f), sin(2 pi f) or sin(pi f). Dividing the desired amplitude by c and multiplying the weight by it turns
/// every design into an approximation by cosines. Points are computed when they are asked for: no storage grows with
/// the grid.
///
/// Gains and weights are scaled by powers of two, and desired amplitudes are powers of f: `Units` has what they lack.
class FrequencyGrid {
 public:
  /// Bands that have fewer than two points get two.
  FrequencyGrid(const BandPlan& bands, std::int32_t length);

  /// Points whose error a filter has influence on.
  std::int64_t Size() const { return size_; }
  /// The weighted error, in units, of the points that are left out, because no filter can lower it: where c = 0, and
  /// where bands touch with a step in the gain.
  double FixedError() const { return fixed_error_; }

  /// The largest weighted desired value, that of joined edges left out.
  double Scale() const { return scale_; }
  /// True when desired values and weights go with a power of the frequency.
  bool IsShaped() const { return power_ != 0; }

  struct Segment {
    std::int64_t start;  ///< position of its first point in the grid
    std::int64_t count;
    std::int64_t skip;  ///< points of the band before the first
    double low;         ///< the band's edges
    double high;
    double step;
    std::int64_t band_count;
    double gain;
    double weight;

    double FrequencyAt(std::int64_t position) const {
      const std::int64_t i = position - start + skip;
      return i + 1 < band_count ? low + step * static_cast<double>(i) : high;
    }
  };
  std::span<const Segment> Segments() const { return segments_; }
  std::size_t SegmentOf(std::int64_t position) const;

  double Frequency(std::int64_t position) const;
  /// The points at ascending positions.
  PointSet Points(std::vector<std::int64_t> positions) const;
  /// The positions of the first and the last point of each segment.
  std::vector<std::int64_t> Ends() const;
  /// The desired value in extended precision.
  Wide Desired(std::int64_t position) const;
  /// The desired value and the weight of the amplitude itself, c not taken in.
  double DesiredAmplitude(std::int64_t position) const;
  double AmplitudeWeight(std::int64_t position) const;

 private:
  enum class Factor { One, CosHalf, Sin, SinHalf };

  void Join(Segment& band);
  void AddBand(Segment band);
  double WeightAt(double weight, double f) const;

  std::vector<Segment> segments_;
  std::int64_t size_ = 0;
  double fixed_error_ = 0;
  double scale_ = 0;
  int power_ = 0;
  bool fixed_weights_ = false;
  Factor factor_ = Factor::One;
};

}  // namespace passband::OptimalFir::detail
