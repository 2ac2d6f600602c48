// passband design: filters from their descriptions.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddDesignCommand(CLI::App& app);

}  // namespace passband_cli
