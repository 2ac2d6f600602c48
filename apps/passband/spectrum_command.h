// passband plot-spectrum: a picture of the spectra of recordings.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddSpectrumCommand(CLI::App& app);

}  // namespace passband_cli
