#include "json_file.h"

#include <fstream>
#include <iterator>

#include "failure.h"
#include "signal_file.h"

namespace passband_cli {

using nlohmann::ordered_json;

std::optional<ordered_json> ReadJson(const std::string& path, const std::string& kind) {
  RefuseUnreadable(path);
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos || (text[first] != '{' && text[first] != '[')) return std::nullopt;
  try {
    return ordered_json::parse(text);
  } catch (const ordered_json::exception& error) {
    FailJson(path, kind, error);
  }
}

void FailJson(const std::string& path, const std::string& kind, const std::exception& error) {
  // "[json.exception.parse_error.101] parse error at line 1, ...": the words begin behind the bracket.
  const std::string text = error.what();
  Fail("{} is not a JSON {} file: {}", path, kind, text.substr(text.find(']') + 2));
}

}  // namespace passband_cli
