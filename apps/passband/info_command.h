// passband info: what a file tells about its signal.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddInfoCommand(CLI::App& app);

}  // namespace passband_cli
