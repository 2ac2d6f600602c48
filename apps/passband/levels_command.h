// passband levels: the level of recordings inside and outside a band.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddLevelsCommand(CLI::App& app);

}  // namespace passband_cli
