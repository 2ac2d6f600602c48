#include "signal_file.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "audio_file.h"
#include "csv_file.h"
#include "failure.h"

namespace passband_cli {
namespace {

// The extension in lower case, with its dot.
std::string ExtensionOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

}  // namespace

bool IsCsvPath(const std::string& path) { return ExtensionOf(path) == ".csv"; }

// Said here in plain words, before a file format library comes to its own conclusions.
void RefuseUnreadable(const std::string& path) {
  if (std::filesystem::is_directory(path)) Fail("cannot read {}: it is a directory", path);
  if (access(path.c_str(), R_OK) != 0) Fail("cannot read {}: {}", path, std::strerror(errno));
}

std::unique_ptr<SignalReader> OpenSignal(const std::string& path) {
  RefuseUnreadable(path);
  if (IsCsvPath(path)) return std::make_unique<CsvSignalReader>(path);
  return std::make_unique<AudioReader>(path);
}

std::unique_ptr<SignalWriter> CreateSignal(const std::string& path, const SignalFormat& format) {
  if (IsCsvPath(path)) return std::make_unique<CsvSignalWriter>(path, format);
  return std::make_unique<AudioWriter>(path, ExtensionOf(path), format);
}

}  // namespace passband_cli
