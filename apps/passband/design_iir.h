// passband design iir: IIR filters from their requirements.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

/// Adds `iir` to the command `design`.
void AddDesignIirCommand(CLI::App& design);

}  // namespace passband_cli
