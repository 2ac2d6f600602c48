// Comma-separated values: one column per channel, one line per frame.
//
// Reading: values are separated by commas, semicolons or tabs; blanks around them, empty lines and lines that start
// with
// '#' are skipped; a first line that does not start with a number names the columns. Numbers have a decimal point.
// Writing: commas, and the shortest digits that read back as the same double.
#pragma once

#include <cstdint>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "output_file.h"
#include "signal_file.h"

namespace passband_cli {

/// Reads the lines of a CSV file as rows of numbers.
class CsvTable {
 public:
  explicit CsvTable(const std::string& path);

  /// Numbers in each row; every row must have as many.
  std::size_t Columns() const { return columns_; }
  const std::vector<std::string>& Names() const { return names_; }
  /// The next row, or an empty span at the end.
  std::span<const double> NextRow();

 private:
  bool NextLine();
  void Split();
  void ReadNumbers();

  std::string path_;
  std::ifstream file_;
  std::string line_;
  std::int64_t line_number_ = 0;
  std::vector<std::string_view> fields_;  // of `line_`
  std::vector<double> row_;
  std::vector<std::string> names_;
  std::size_t columns_ = 0;
  bool first_row_waits_ = false;
};

class CsvSignalReader final : public SignalReader {
 public:
  explicit CsvSignalReader(const std::string& path);
  const SignalFormat& Format() const override { return format_; }
  std::size_t Read(std::span<double> samples) override;

 private:
  CsvTable table_;
  SignalFormat format_;
};

class CsvSignalWriter final : public SignalWriter {
 public:
  CsvSignalWriter(const std::string& path, const SignalFormat& format);
  void Write(std::span<const double> samples) override;
  void Finish() override { output_.Finish(); }

 private:
  TextOutput output_;
  std::size_t channels_;
  fmt::memory_buffer text_;
};

}  // namespace passband_cli
