#include "analyze_command.h"

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "analysis_page.h"
#include "failure.h"
#include "output_file.h"
#include "recording_analysis.h"
#include "recording_stretch.h"

namespace passband_cli {
namespace {

struct Options {
  StretchOptions stretch;
  std::string out;
  std::string format = "text";
};

std::string FormatText(const RecordingAnalysis& analysis) {
  std::string text;
  for (const auto& [name, value] : AnalysisRows(analysis)) {
    fmt::format_to(std::back_inserter(text), "{:<16} {}\n", name, value);
  }
  return text;
}

std::string FormatJson(const RecordingAnalysis& analysis, const Options& options) {
  nlohmann::ordered_json document;
  document["file"] = options.stretch.in;
  document["channel"] = options.stretch.channel;
  document["rate_hz"] = analysis.rate_hz;
  document["duration_s"] = analysis.duration_s;
  document["peak_dbfs"] = analysis.peak_db;
  document["rms_dbfs"] = analysis.rms_db;
  document["crest_db"] = analysis.crest_db;
  document["mean"] = analysis.mean;
  document["zero_crossings"] = analysis.zero_crossings;
  document["peaks"] = nlohmann::ordered_json::array();
  for (const SpectralPeak& peak : analysis.peaks) {
    document["peaks"].push_back({{"hz", peak.hz}, {"dbfs", peak.decibels}});
  }
  document["pitch_hz"] = nullptr;
  if (analysis.pitch) document["pitch_hz"] = 1 / analysis.pitch->period_s;
  return document.dump(2) + "\n";
}

void Run(const Options& options) {
  if (!options.out.empty() && !options.out.ends_with(".html")) {
    Fail("cannot write {}: the page is an HTML file, with the extension .html", options.out);
  }
  const Stretch stretch = ReadStretch(options.stretch);
  const RecordingAnalysis analysis = AnalyzeRecording(stretch);
  if (!options.out.empty()) {
    std::string title = std::filesystem::path(options.stretch.in).filename().string();
    if (stretch.channels > 1) title += fmt::format(", channel {} of {}", options.stretch.channel, stretch.channels);
    WriteText(options.out, AnalysisPage(analysis, title));
  }
  PrintText(options.format == "json" ? FormatJson(analysis, options) : FormatText(analysis));
}

}  // namespace

void AddAnalyzeCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("analyze", "Measure a recording and show it on a page of pictures");
  AddStretchOptions(*command, options->stretch);
  command->add_option("--out", options->out, "Page to write, .html, with its pictures inside")->type_name("FILE");
  command->add_option("--format", options->format, "text or json, of the numbers on standard output")
      ->check(CLI::IsMember({"text", "json"}).description(""))
      ->type_name("NAME")
      ->capture_default_str();
  command->footer(
      "Levels are relative to a sine of full scale, the peak level to full scale. Frequencies of peaks are "
      "interpolated.\n"
      "The pitch is the highest peak of the cepstrum of the loudest 60 ms, when it stands out clearly.\n"
      "Example:\n"
      "  passband analyze --in speech.wav --out speech.html");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
