#include "mask.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "csv_file.h"
#include "failure.h"

namespace passband_cli {
namespace {

constexpr double kRounding = 1e-9;  // dB: a filter that touches its mask does not leave it

// The worst place so far where a limit is left.
struct Worst {
  double excess_db = 0;
  double hz = 0;
  double level_db = 0;
  const MaskBand* band = nullptr;

  void Look(const MaskBand& place, double f, double level) {
    const double excess = std::isnan(level) ? std::numeric_limits<double>::infinity()
                                            : std::max(place.lowest_db - level, level - place.highest_db);
    if (excess > kRounding && excess > excess_db) *this = {excess, f, level, &place};
  }
};

}  // namespace

Mask ReadMask(const std::string& path) {
  constexpr std::size_t kColumns = 4;
  CsvTable table(path);
  if (table.Columns() != kColumns) {
    Fail("{}: a mask has 4 columns, from and to in Hz, lowest and highest in dB; {} found", path, table.Columns());
  }
  Mask mask;
  for (auto row = table.NextRow(); !row.empty(); row = table.NextRow()) {
    const MaskBand band{row[0], row[1], row[2], row[3]};
    if (!(band.from_hz >= 0 && band.from_hz <= band.to_hz && std::isfinite(band.to_hz))) {
      Fail("{}: {} to {} Hz is no stretch of frequencies", path, band.from_hz, band.to_hz);
    }
    if (!(band.lowest_db <= band.highest_db)) {
      Fail("{}: nothing lies between {} and {} dB", path, band.lowest_db, band.highest_db);
    }
    mask.push_back(band);
  }
  if (mask.empty()) Fail("{} holds no mask", path);
  return mask;
}

std::string MaskHelp() {
  return "Masks are CSV files with the columns from, to (Hz), lowest, highest (dB), where -inf and inf set no limit:\n"
         "  300,3400,-0.1,0.1\n"
         "  4000,24000,-inf,-60\n"
         "When the response leaves the mask, the worst place is told in one line, and the exit code is 1.\n";
}

void DrawMask(const Mask& mask, Plot& plot) {
  const double gap = std::nan("");
  Curve limits;
  limits.name = "mask";
  limits.marker = Marker::Limit;
  for (const MaskBand& band : mask) {
    const double from = std::max(band.from_hz, plot.x_min);
    const double to = std::min(band.to_hz, plot.x_max);
    for (const double level : {band.lowest_db, band.highest_db}) {
      if (!std::isfinite(level) || from >= to) continue;
      limits.x.insert(limits.x.end(), {from, to, gap});
      limits.y.insert(limits.y.end(), {level, level, gap});
    }
  }
  if (!limits.x.empty()) plot.curves.push_back(limits);
}

void CheckMask(const Mask& mask, const Curve& response, const std::function<double(double)>& at) {
  Worst worst;
  for (const MaskBand& band : mask) {
    worst.Look(band, band.from_hz, at(band.from_hz));
    worst.Look(band, band.to_hz, at(band.to_hz));
    auto place = std::lower_bound(response.x.begin(), response.x.end(), band.from_hz);
    for (; place != response.x.end() && *place <= band.to_hz; ++place) {
      worst.Look(band, *place, response.y[static_cast<std::size_t>(place - response.x.begin())]);
    }
  }
  if (worst.band == nullptr) return;
  const bool above = worst.level_db > worst.band->highest_db;
  Fail("the mask is left by {:.3g} dB: {:.6g} dB at {:.8g} Hz, {} {:.6g} dB", worst.excess_db, worst.level_db, worst.hz,
       above ? "above" : "below", above ? worst.band->highest_db : worst.band->lowest_db);
}

}  // namespace passband_cli
