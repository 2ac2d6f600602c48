#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include <fmt/format.h>

namespace passband_cli {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kQuietTime{500};
constexpr milliseconds kInterval{100};
constexpr std::size_t kWidth = 40;

}  // namespace

Progress::Progress(std::int64_t total)
    : total_(total), terminal_(isatty(STDERR_FILENO) == 1), next_(steady_clock::now() + kQuietTime) {}

Progress::~Progress() {
  if (shown_) std::fputs("\r\x1b[K", stderr);
}

void Progress::Update(std::int64_t done) {
  if (!terminal_) return;
  const auto now = steady_clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  shown_ = true;
  if (total_ <= 0) {
    fmt::print(stderr, "\r{} frames\x1b[K", done);
  } else {
    const double part = std::min(static_cast<double>(done) / static_cast<double>(total_), 1.0);
    const auto filled = static_cast<std::size_t>(part * kWidth);
    fmt::print(stderr, "\r[{}{}] {:3.0f} %\x1b[K", std::string(filled, '='), std::string(kWidth - filled, ' '),
               100 * part);
  }
  std::fflush(stderr);
}

}  // namespace passband_cli
