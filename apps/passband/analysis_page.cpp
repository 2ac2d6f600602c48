#include "analysis_page.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "plot.h"

namespace passband_cli {
namespace {

// For text between the tags of HTML.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

void SetRange(Plot& plot, double most) {
  double highest = -1e300;
  double lowest = 1e300;
  for (const Curve& curve : plot.curves) {
    for (const double y : curve.y) {
      highest = std::max(highest, y);
      lowest = std::min(lowest, y);
    }
  }
  const double margin = std::max(0.05 * (highest - lowest), 1e-3 * std::max(std::abs(highest), 1.0));
  plot.y_max = highest + margin;
  plot.y_min = std::max(lowest - margin, plot.y_max - most);
}

Plot Frame(const char* title, const char* x_label, const char* y_label, const Curve& curve) {
  Plot plot;
  plot.title = title;
  plot.x_label = x_label;
  plot.y_label = y_label;
  plot.x_min = curve.x.front();
  plot.x_max = std::max(curve.x.back(), curve.x.front() + 1e-9);
  plot.curves.push_back(curve);
  return plot;
}

Plot WaveformPlot(const RecordingAnalysis& analysis) {
  Plot plot = Frame("Waveform", "Time in s", "Full scale = 1", analysis.waveform);
  SetRange(plot, 1e300);
  return plot;
}

Plot SpectrumPlot(const RecordingAnalysis& analysis) {
  constexpr double kSpanDb = 140;
  Plot plot = Frame("Power spectrum", "Frequency in Hz", "Power density in dBFS per Hz", analysis.spectrum);
  plot.log_x = true;
  plot.x_min = std::min(20.0, plot.x_max / 500);
  if (!analysis.ar_spectrum.x.empty()) plot.curves.push_back(analysis.ar_spectrum);
  SetRange(plot, kSpanDb);
  return plot;
}

Plot CepstrumPlot(const RecordingAnalysis& analysis) {
  Plot plot = Frame("Cepstrum of the loudest stretch", "Quefrency in ms", "Cepstrum", analysis.cepstrum);
  if (analysis.pitch) plot.marks.push_back(1e3 * analysis.pitch->period_s);
  SetRange(plot, 1e300);
  return plot;
}

Plot ZoomPlot(const RecordingAnalysis& analysis) {
  constexpr double kSpanDb = 100;
  Plot plot = Frame("Around the highest peak", "Frequency in Hz", "Level in dBFS", analysis.zoom);
  plot.marks.push_back(analysis.peaks.front().hz);
  SetRange(plot, kSpanDb);
  return plot;
}

std::string Figure(const Plot& plot, const std::string& name) {
  const std::string svg = SvgOf(plot, name);
  return fmt::format("<figure id=\"{}\">\n{}</figure>\n", name, svg.substr(svg.find("<svg")));
}

constexpr const char* kStyle =
    "body{font-family:sans-serif;max-width:1000px;margin:2em auto;padding:0 1em;color:#222}"
    "table{border-collapse:collapse}td{padding:.2em 1.5em .2em 0;border-bottom:1px solid #ddd}"
    "figure{margin:1.5em 0}svg{max-width:100%;height:auto}";

}  // namespace

std::vector<std::pair<std::string, std::string>> AnalysisRows(const RecordingAnalysis& analysis) {
  std::vector<std::pair<std::string, std::string>> rows{
      {"duration", fmt::format("{:.6g} s at {} Hz", analysis.duration_s, analysis.rate_hz)},
      {"peak level", fmt::format("{:.2f} dBFS", analysis.peak_db)},
      {"effective level", fmt::format("{:.2f} dBFS", analysis.rms_db)},
      {"crest factor", fmt::format("{:.2f} dB", analysis.crest_db)},
      {"mean", fmt::format("{:.3g} of full scale", analysis.mean)},
      {"zero crossings", fmt::format("{}, {:.6g} a second", analysis.zero_crossings,
                                     static_cast<double>(analysis.zero_crossings) / analysis.duration_s)},
  };
  for (std::size_t k = 0; k < analysis.peaks.size(); ++k) {
    rows.emplace_back(fmt::format("peak {}", k + 1),
                      fmt::format("{:.2f} Hz, {:.2f} dBFS", analysis.peaks[k].hz, analysis.peaks[k].decibels));
  }
  rows.emplace_back("pitch", analysis.pitch ? fmt::format("{:.1f} Hz", 1 / analysis.pitch->period_s) : "none");
  return rows;
}

std::string AnalysisPage(const RecordingAnalysis& analysis, const std::string& title) {
  const std::string name = Escaped(title);
  std::string page = fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\"><title>{0}</title><style>{1}</style></head>\n"
      "<body>\n<h1>{0}</h1>\n<table>\n",
      name, kStyle);
  for (const auto& [what, text] : AnalysisRows(analysis)) {
    page += fmt::format("<tr><td>{}</td><td>{}</td></tr>\n", what, text);
  }
  page += "</table>\n";
  page += Figure(WaveformPlot(analysis), "waveform");
  page += Figure(SpectrumPlot(analysis), "spectrum");
  if (!analysis.spectrogram.image.values.empty()) page += Figure(analysis.spectrogram, "spectrogram");
  if (!analysis.zoom.x.empty()) page += Figure(ZoomPlot(analysis), "zoom");
  if (!analysis.cepstrum.x.empty()) page += Figure(CepstrumPlot(analysis), "cepstrum");
  return page + "</body>\n</html>\n";
}

}  // namespace passband_cli
