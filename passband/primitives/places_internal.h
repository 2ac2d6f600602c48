// Places in blocks of whole vectors.
#pragma once

#include <algorithm>
#include <cstddef>

#include "passband/primitives/places.h"

namespace passband::primitives::detail {

/// The most places that a kernel takes at a time: four vectors of the widest kind.
inline constexpr std::size_t kMaxBlock = 32;

/// Walks along places in blocks of one size. The last block is filled up by repeating its last place.
class PlaceBlocks {
 public:
  PlaceBlocks(const Places& places, std::size_t size) : places_(places), size_(size) { Load(); }

  bool Ended() const { return at_ >= static_cast<std::size_t>(places_.count); }
  void Next() {
    at_ += size_;
    Load();
  }
  std::size_t At() const { return at_; }  ///< of the first place
  std::size_t Count() const {
    return std::min(size_, static_cast<std::size_t>(places_.count) - at_);
  }  ///< in the block
  const double* Hi() const { return hi_; }
  const double* Lo() const { return lo_; }

 private:
  void Load() {
    if (Ended()) return;
    hi_ = places_.hi + at_;
    lo_ = places_.lo + at_;
    const std::size_t count = Count();
    if (count == size_) return;
    std::fill_n(std::copy_n(hi_, count, last_hi_), size_ - count, hi_[count - 1]);
    std::fill_n(std::copy_n(lo_, count, last_lo_), size_ - count, lo_[count - 1]);
    hi_ = last_hi_;
    lo_ = last_lo_;
  }

  const Places& places_;
  std::size_t size_;
  std::size_t at_ = 0;
  const double* hi_ = nullptr;
  const double* lo_ = nullptr;
  double last_hi_[kMaxBlock];
  double last_lo_[kMaxBlock];
};

}  // namespace passband::primitives::detail
