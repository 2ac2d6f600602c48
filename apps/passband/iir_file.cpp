#include "iir_file.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace passband_cli {
namespace {

constexpr std::size_t kSectionLength = 6;

// A number, a row of numbers, or rows below each other, between the brackets of a language.
template <class Number>
std::string Nested(const NumberTable& table, char open, char close, const std::string& indent, const Number& number) {
  if (table.rank == 0) return number(table.values.front());
  std::string text(1, open);
  for (std::size_t n = 0; n < table.values.size(); ++n) {
    const bool starts_row = table.rank == 1 || n % table.columns == 0;
    text += n > 0 ? "," : "";
    text += starts_row ? "\n" + indent + "  " : std::string(" ");
    if (table.rank == 2 && starts_row) text += open;
    text += number(table.values[n]);
    if (table.rank == 2 && (n + 1) % table.columns == 0) text += close;
  }
  return text + "\n" + indent + close;
}

// The library that writes JSON chooses the number of digits itself; so the numbers go in by hand as the last members.
std::string FormatJson(const IirDesign& design) {
  std::string text = design.record;
  text.erase(text.rfind("\n}"));
  for (const NumberTable& table : design.numbers) {
    text += fmt::format(",\n  \"{}\": {}", table.name,
                        Nested(table, '[', ']', "  ", [](double x) { return fmt::format("{:.17g}", x); }));
  }
  return text + "\n}\n";
}

std::string FormatC(const IirDesign& design) {
  const bool is_double = design.IsDouble();
  const auto number = [is_double](double x) {
    if (is_double) return fmt::format("{:.17g}", x);
    const std::string digits = fmt::format("{:.9g}", x);
    return digits + (digits.find_first_of(".e") == std::string::npos ? ".0f" : "f");
  };
  const IirRequirement& requirement = design.requirement;
  std::string text = fmt::format("/* {}", design.title);
  if (!requirement.analog) text += fmt::format(" at a sampling rate of {} Hz", requirement.rate_hz);
  if (design.options.form == "sos") text += "; b0, b1, b2, a0, a1, a2 of each section";
  if (design.options.form == "tf") text += fmt::format("; descending powers of {}", requirement.analog ? 's' : 'z');
  text += " */\n";
  for (const NumberTable& table : design.numbers) {
    if (table.values.empty()) {
      text += fmt::format("/* no {} */\n", table.name);
      continue;
    }
    std::string size;
    if (table.rank > 0) size = fmt::format("[{}]", table.Rows());
    if (table.rank > 1) size += fmt::format("[{}]", table.columns);
    text += fmt::format("static const {} {}{} = {};\n", is_double ? "double" : "float", table.name, size,
                        Nested(table, '{', '}', "", number));
  }
  return text;
}

std::string CsvRow(std::string_view name, std::span<const double> values) {
  const std::string_view comma = name.empty() || values.empty() ? "" : ",";
  return fmt::format("{}{}{:.17g}\n", name, comma, fmt::join(values.begin(), values.end(), ","));
}

std::string FormatStateSpace(const std::vector<NumberTable>& numbers) {
  const std::vector<double>& a = numbers[0].values;
  const std::size_t n = numbers[0].columns;
  std::string text;
  for (std::size_t k = 0; k < n; ++k) text += fmt::format("x{},", k + 1);
  text += "u\n";
  for (std::size_t row = 0; row < n; ++row) {
    std::vector<double> line(a.begin() + static_cast<std::ptrdiff_t>(row * n),
                             a.begin() + static_cast<std::ptrdiff_t>((row + 1) * n));
    line.push_back(numbers[1].values[row]);
    text += CsvRow("", line);
  }
  std::vector<double> output = numbers[2].values;
  output.push_back(numbers[3].values.front());
  return text + CsvRow("", output);
}

std::string FormatCsv(const IirDesign& design) {
  const std::string& form = design.options.form;
  const std::vector<NumberTable>& numbers = design.numbers;
  if (form == "ss") return FormatStateSpace(numbers);
  const std::span<const double> first = numbers[0].values;
  std::string text;
  if (form == "tf") {
    text = "numerator,denominator\n";
    for (std::size_t n = 0; n < first.size(); ++n) text += CsvRow("", std::vector{first[n], numbers[1].values[n]});
    return text;
  }
  if (form == "zpk") {
    text = "part,re,im\n";
    const std::span<const double> poles = numbers[1].values;
    for (std::size_t n = 0; n < first.size(); n += 2) text += CsvRow("zero", first.subspan(n, 2));
    for (std::size_t n = 0; n < poles.size(); n += 2) text += CsvRow("pole", poles.subspan(n, 2));
    return text + CsvRow("gain", std::vector{numbers[2].values.front(), 0.0});
  }
  text = "b0,b1,b2,a0,a1,a2\n";
  for (std::size_t n = 0; n < first.size(); n += kSectionLength) text += CsvRow("", first.subspan(n, kSectionLength));
  return text;
}

}  // namespace

std::string FormatIir(const IirDesign& design, IirFormat format) {
  if (format == IirFormat::Json) return FormatJson(design);
  return format == IirFormat::C ? FormatC(design) : FormatCsv(design);
}

}  // namespace passband_cli
