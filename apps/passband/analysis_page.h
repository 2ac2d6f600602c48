// The page of an analysis: numbers and pictures in one HTML file that needs nothing else.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "recording_analysis.h"

namespace passband_cli {

/// The numbers, as rows of a name and a text.
std::vector<std::pair<std::string, std::string>> AnalysisRows(const RecordingAnalysis& analysis);

/// The page, with the pictures inside as SVG.
std::string AnalysisPage(const RecordingAnalysis& analysis, const std::string& title);

}  // namespace passband_cli
