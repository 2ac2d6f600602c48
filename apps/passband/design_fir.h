// passband design fir: FIR filters from their descriptions.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

/// Adds `fir` to the command `design`.
void AddDesignFirCommand(CLI::App& design);

}  // namespace passband_cli
