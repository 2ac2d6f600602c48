// passband zoom: the spectrum of a stretch of a recording, as fine as wanted.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddZoomCommand(CLI::App& app);

}  // namespace passband_cli
