#include "tap_file.h"

#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <span>
#include <vector>

#include <nlohmann/json.hpp>

#include "csv_file.h"
#include "failure.h"
#include "json_file.h"

namespace passband_cli {
namespace {

using nlohmann::ordered_json;

std::string FormatJson(const TapSet& set) {
  // The library that writes JSON chooses the number of digits itself; so the taps go in by hand as the last member.
  std::string text = set.record;
  text.erase(text.rfind("\n}"));
  text += ",\n  \"taps\": [";
  for (std::int32_t n = 0; n < set.taps.Length(); ++n) {
    fmt::format_to(std::back_inserter(text), "{}\n    {:.17g}", n > 0 ? "," : "", set.taps[n]);
  }
  return text + "\n  ]\n}\n";
}

std::vector<double> TapsOfCsv(const std::string& path) {
  CsvTable table(path);
  std::vector<double> taps;
  std::size_t rows = 0;
  for (auto row = table.NextRow(); !row.empty(); row = table.NextRow(), ++rows) {
    if (rows == 1 && table.Columns() > 1) Fail("{}: taps stand in one column or in one row", path);
    taps.insert(taps.end(), row.begin(), row.end());
  }
  return taps;
}

std::vector<double> TapsOfJson(const std::string& path, const ordered_json& document, TapSet& set) {
  try {
    if (document.is_array()) return document.get<std::vector<double>>();
    if (document.contains("sections")) Fail("{} holds sections of an IIR filter: --sections takes them", path);
    set.rate_hz = document.value("rate_hz", 0.0);
    set.edges_hz = document.value("edges_hz", std::vector<double>());
    return document.at("taps").get<std::vector<double>>();
  } catch (const ordered_json::exception& error) {
    FailJson(path, "tap", error);
  }
}

}  // namespace

std::string FormatTaps(const TapSet& set, TapFormat format) {
  if (format == TapFormat::Json) return FormatJson(set);
  std::string text = "tap\n";
  for (std::int32_t n = 0; n < set.taps.Length(); ++n) {
    fmt::format_to(std::back_inserter(text), "{:.17g}\n", set.taps[n]);
  }
  return text;
}

TapSet ReadTaps(const std::string& path, bool is_double) {
  TapSet set;
  const auto document = ReadJson(path, "tap");
  const std::vector<double> taps = document ? TapsOfJson(path, *document, set) : TapsOfCsv(path);
  if (taps.empty()) Fail("{} holds no taps", path);
  if (taps.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 2)) {
    Fail("{} holds too many taps", path);
  }
  set.taps.Size(static_cast<std::int32_t>(taps.size()), false, is_double);
  for (std::size_t n = 0; n < taps.size(); ++n) {
    const auto place = static_cast<std::int32_t>(n);
    set.taps.SetDefault(place, taps[n]);
    if (!std::isfinite(set.taps[place])) Fail("{}: tap {} is {}", path, n, set.taps[place]);
  }
  set.title = fmt::format("{}, {} taps", path, taps.size());
  return set;
}

}  // namespace passband_cli
