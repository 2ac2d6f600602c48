// passband response: what a filter does over frequency.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddResponseCommand(CLI::App& app);

}  // namespace passband_cli
