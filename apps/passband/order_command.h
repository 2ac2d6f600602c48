// passband order: what a requirement takes in each family of IIR filters.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddOrderCommand(CLI::App& app);

}  // namespace passband_cli
