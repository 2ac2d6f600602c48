#include "section_file.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "csv_file.h"
#include "failure.h"
#include "json_file.h"

namespace passband_cli {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kSectionLength = 6;

[[noreturn]] void RefuseTransferFunction(const std::string& path) {
  Fail("{} is a transfer function, a form too fragile to filter with; design sections instead (--form sos)", path);
}

std::vector<double> SectionsOfCsv(const std::string& path) {
  CsvTable table(path);
  if (table.Columns() == 2) RefuseTransferFunction(path);
  if (table.Columns() != kSectionLength) {
    Fail("{}: sections have 6 columns, b0,b1,b2,a0,a1,a2; {} found", path, table.Columns());
  }
  std::vector<double> sections;
  for (auto row = table.NextRow(); !row.empty(); row = table.NextRow()) {
    sections.insert(sections.end(), row.begin(), row.end());
  }
  return sections;
}

std::vector<double> SectionsOfJson(const std::string& path, const ordered_json& document, SectionSet& set) {
  try {
    if (document.is_object()) {
      const std::string form = document.value("form", "sos");
      if (form == "tf") RefuseTransferFunction(path);
      if (form != "sos") Fail("{} holds a filter as {}; design sections instead (--form sos)", path, form);
      if (document.contains("taps")) Fail("{} holds the taps of an FIR filter: --taps takes them", path);
      set.rate_hz = document.value("rate_hz", 0.0);
    }
    const ordered_json& rows = document.is_object() ? document.at("sections") : document;
    std::vector<double> sections;
    for (const std::vector<double>& row : rows.get<std::vector<std::vector<double>>>()) {
      if (row.size() != kSectionLength) Fail("{}: a section has 6 numbers, not {}", path, row.size());
      sections.insert(sections.end(), row.begin(), row.end());
    }
    return sections;
  } catch (const ordered_json::exception& error) {
    FailJson(path, "section", error);
  }
}

// The poles of 1 + a1 z^-1 + a2 z^-2 lie inside the unit circle when (a1, a2) lies inside the stability triangle.
void CheckSection(const std::string& path, const passband::TVec& sections, std::int32_t place) {
  for (std::int32_t n = 0; n < 6; ++n) {
    if (!std::isfinite(sections[place + n])) Fail("{}: section {} holds {}", path, place / 6 + 1, sections[place + n]);
  }
  const double a0 = sections[place + 3];
  if (a0 == 0) Fail("{}: section {} has a0 = 0", path, place / 6 + 1);
  const double a1 = sections[place + 4] / a0;
  const double a2 = sections[place + 5] / a0;
  if (!(std::abs(a2) < 1 && std::abs(a1) < 1 + a2)) {
    fmt::print(stderr, "passband: note: section {} of {} is not stable: what goes in rings on without end\n",
               place / 6 + 1, path);
  }
}

}  // namespace

SectionSet ReadSections(const std::string& path, bool is_double) {
  SectionSet set;
  const auto document = ReadJson(path, "section");
  const std::vector<double> sections = document ? SectionsOfJson(path, *document, set) : SectionsOfCsv(path);
  if (sections.empty()) Fail("{} holds no sections", path);
  if (sections.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 2)) {
    Fail("{} holds too many sections", path);
  }
  set.sections.Size(static_cast<std::int32_t>(sections.size()), false, is_double);
  for (std::size_t n = 0; n < sections.size(); ++n) {
    set.sections.SetDefault(static_cast<std::int32_t>(n), sections[n]);
  }
  for (std::int32_t n = 0; n < set.sections.Length(); n += 6) CheckSection(path, set.sections, n);
  const std::size_t count = sections.size() / kSectionLength;
  set.title = fmt::format("{}, {} section{}", path, count, count == 1 ? "" : "s");
  return set;
}

}  // namespace passband_cli
