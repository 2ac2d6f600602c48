#include "csv_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <system_error>

#include "failure.h"

namespace passband_cli {
namespace {

constexpr std::string_view kSeparators = ",;\t";
constexpr std::string_view kBlanks = " \r";

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool ParseNumber(std::string_view text, double& value) {
  if (text.starts_with('+')) text.remove_prefix(1);
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
  return status == std::errc() && end == text.data() + text.size();
}

}  // namespace

CsvTable::CsvTable(const std::string& path) : path_(path), file_(path, std::ios::binary) {
  if (!file_) Fail("cannot read {}", path);
  if (!NextLine()) Fail("{} holds no numbers", path);
  double ignored = 0;
  if (!ParseNumber(fields_.front(), ignored)) {
    names_.assign(fields_.begin(), fields_.end());
    if (!NextLine()) Fail("{} holds no numbers below its first line", path);
  }
  columns_ = fields_.size();
  if (!names_.empty() && names_.size() != columns_) {
    Fail("{}, line {}: {} values below {} names", path, line_number_, columns_, names_.size());
  }
  row_.resize(columns_);
  ReadNumbers();
  first_row_waits_ = true;
}

std::span<const double> CsvTable::NextRow() {
  if (first_row_waits_) {
    first_row_waits_ = false;
    return row_;
  }
  if (!NextLine()) return {};
  if (fields_.size() != columns_) {
    Fail("{}, line {}: {} values, the lines above have {}", path_, line_number_, fields_.size(), columns_);
  }
  ReadNumbers();
  return row_;
}

// Goes on to the next line that holds something.
bool CsvTable::NextLine() {
  while (std::getline(file_, line_)) {
    ++line_number_;
    if (line_number_ == 1 && line_.starts_with("\xEF\xBB\xBF")) line_.erase(0, 3);  // byte order mark of spreadsheets
    const std::string_view text = Trim(line_);
    if (text.empty() || text.front() == '#') continue;
    Split();
    return true;
  }
  if (file_.bad()) Fail("cannot read {}: the file ends with an error behind line {}", path_, line_number_);
  return false;
}

void CsvTable::Split() {
  fields_.clear();
  std::string_view rest = line_;
  for (;;) {
    const std::size_t end = rest.find_first_of(kSeparators);
    fields_.push_back(Trim(rest.substr(0, end)));
    if (end == std::string_view::npos) return;
    rest.remove_prefix(end + 1);
  }
}

void CsvTable::ReadNumbers() {
  for (std::size_t k = 0; k < columns_; ++k) {
    if (!ParseNumber(fields_[k], row_[k])) {
      Fail("{}, line {}: '{}' is not a number", path_, line_number_, fields_[k].substr(0, 40));
    }
  }
}

CsvSignalReader::CsvSignalReader(const std::string& path) : table_(path) {
  format_.channels = static_cast<int>(table_.Columns());
  format_.names = table_.Names();
  format_.samples = SampleFormat::Float;  // what an audio file gets unless another format is asked for
}

std::size_t CsvSignalReader::Read(std::span<double> samples) {
  const std::size_t columns = table_.Columns();
  std::size_t frames = 0;
  for (; (frames + 1) * columns <= samples.size(); ++frames) {
    const std::span<const double> row = table_.NextRow();
    if (row.empty()) break;
    std::copy(row.begin(), row.end(), samples.begin() + static_cast<std::ptrdiff_t>(frames * columns));
  }
  return frames;
}

CsvSignalWriter::CsvSignalWriter(const std::string& path, const SignalFormat& format)
    : output_(path), channels_(static_cast<std::size_t>(format.channels)) {
  if (!format.names.empty()) output_.Write(fmt::format("{}\n", fmt::join(format.names, ",")));
}

void CsvSignalWriter::Write(std::span<const double> samples) {
  text_.clear();
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const char separator = (n + 1) % channels_ == 0 ? '\n' : ',';
    fmt::format_to(std::back_inserter(text_), "{}{}", samples[n], separator);
  }
  output_.Write({text_.data(), text_.size()});
}

}  // namespace passband_cli
