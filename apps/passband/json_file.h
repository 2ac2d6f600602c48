// JSON documents in files.
#pragma once

#include <exception>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace passband_cli {

/// The document in a file that begins like one, with a brace or a bracket; nothing of any other file. A document with
/// faults raises "... is not a JSON `kind` file: ...".
std::optional<nlohmann::ordered_json> ReadJson(const std::string& path, const std::string& kind);

/// Raises that the file is not a JSON `kind` file, with the reason in the JSON library's words.
[[noreturn]] void FailJson(const std::string& path, const std::string& kind, const std::exception& error);

}  // namespace passband_cli
