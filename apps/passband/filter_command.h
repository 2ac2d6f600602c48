// passband filter: streams a file through a filter.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddFilterCommand(CLI::App& app);

}  // namespace passband_cli
