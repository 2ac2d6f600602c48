// A progress bar on standard error, for people who wait.
#pragma once

#include <chrono>
#include <cstdint>

namespace passband_cli {

/// Shows how far a command is, when standard error is a terminal and the command takes longer than half a second;
/// otherwise prints nothing. The line is wiped when the object goes.
class Progress {
 public:
  /// `total` frames, -1 when their number is not known.
  explicit Progress(std::int64_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Update(std::int64_t done);

 private:
  std::int64_t total_;
  bool terminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace passband_cli
