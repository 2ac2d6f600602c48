#include "order_command.h"

#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "iir_options.h"
#include "iir_requirement.h"
#include "output_file.h"

namespace passband_cli {
namespace {

struct Options {
  IirOptions iir;
  std::string format = "text";
};

struct Row {
  std::string_view family;
  IirOrder estimate;
  std::int64_t poles = 0;
};

std::string FormatText(const std::vector<Row>& rows, const IirRequirement& requirement) {
  std::string text =
      fmt::format("{:<11}  {:>6}  {:>6}  cut-offs in {}\n", "family", "order", "poles", requirement.Unit());
  text += std::string(text.size() - 1, '-') + "\n";
  for (const Row& row : rows) {
    fmt::format_to(std::back_inserter(text), "{:<11}  {:>6}  {:>6}  {:.8g}\n", row.family, row.estimate.order,
                   row.poles, fmt::join(row.estimate.cutoffs, "  "));
  }
  return text;
}

std::string FormatJson(const std::vector<Row>& rows, const IirRequirement& requirement, const IirOptions& options) {
  const std::string unit = requirement.analog ? "rad_s" : "hz";
  nlohmann::ordered_json document;
  document["type"] = requirement.type->name;
  if (!requirement.analog) document["rate_hz"] = requirement.rate_hz;
  document["edges_" + unit] = requirement.edges;
  document["ripple_db"] = *options.ripple_db;
  document["attenuation_db"] = *options.attenuation_db;
  document["orders"] = nlohmann::ordered_json::array();
  for (const Row& row : rows) {
    document["orders"].push_back({{"family", row.family},
                                  {"order", row.estimate.order},
                                  {"poles", row.poles},
                                  {"cutoffs_" + unit, row.estimate.cutoffs}});
  }
  return document.dump(2) + "\n";
}

void Run(const Options& options) {
  const IirRequirement requirement = CheckRequirement(options.iir);
  CheckDecibels(options.iir);
  std::vector<Row> rows;
  const auto add = [&](const IirFamily& family) {
    const IirOrder estimate = EstimateOrder(family, requirement, options.iir);
    rows.push_back({family.name, estimate, PolesOf(requirement, estimate.order)});
  };
  if (!options.iir.family.empty()) {
    add(FamilyFromName(options.iir.family));
  } else {
    for (const IirFamily& family : EstimatedFamilies()) add(family);
  }
  PrintText(options.format == "json" ? FormatJson(rows, requirement, options.iir) : FormatText(rows, requirement));
}

}  // namespace

void AddOrderCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("order", "Estimate the order of IIR filters that meet a requirement");
  AddRequirementOptions(*command, options->iir)
      ->description("butterworth, chebyshev1, chebyshev2 or elliptic [all of them]");
  command->add_option("--format", options->format, "text or json")
      ->check(CLI::IsMember({"text", "json"}).description(""))
      ->type_name("NAME")
      ->capture_default_str();
  command->footer(
      RequirementHelp() +
      "The cut-offs are what a design of that order is made with: the 3 dB points of a butterworth filter, the ends\n"
      "of the pass band of chebyshev1 and elliptic filters, those of the stop band of chebyshev2 filters.\n"
      "Example:\n"
      "  passband order --type bandpass --edges 200,300,3400,4000 --rate 48000 --ripple 1 --attenuation 60");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
