// passband tone: test tones as recordings.
#pragma once

namespace CLI {
class App;
}

namespace passband_cli {

void AddToneCommand(CLI::App& app);

}  // namespace passband_cli
