// passband analyze: a page of results on a recording.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddAnalyzeCommand(CLI::App& app);

}  // namespace passband_cli
