#include "output_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "failure.h"

namespace passband_cli {

namespace fs = std::filesystem;

OutputFile::OutputFile(const std::string& path) : path_(path), write_path_(path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::is_directory(status)) Fail("cannot write {}: it is a directory", path);
  if (fs::exists(status)) {
    // A file that may not be written must not be replaced either, although its directory would allow it.
    if (access(path.c_str(), W_OK) != 0) Fail("cannot write {}: {}", path, std::strerror(errno));
    if (!fs::is_regular_file(status)) return;
  }
  // Through a symbolic link the file it points to is replaced, not the link.
  target_ = fs::exists(status) ? fs::canonical(path).string() : path;
  write_path_ = fmt::format("{}.{}.part", target_, getpid());
}

OutputFile::~OutputFile() {
  if (!target_.empty()) std::remove(write_path_.c_str());
}

void OutputFile::Commit() {
  if (target_.empty()) return;
  if (std::rename(write_path_.c_str(), target_.c_str()) != 0) Fail("cannot write {}: {}", path_, std::strerror(errno));
  target_.clear();
}

TextOutput::TextOutput(const std::string& path) : output_(path), file_(std::fopen(output_.WritePath().c_str(), "wb")) {
  if (!file_) Fail("cannot write {}: {}", path, std::strerror(errno));
}

void TextOutput::Write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) {
    Fail("cannot write {}: {}", output_.Path(), std::strerror(errno));
  }
}

void TextOutput::Finish() {
  if (std::fclose(file_.release()) != 0) Fail("cannot write {}: {}", output_.Path(), std::strerror(errno));
  output_.Commit();
}

void RefuseSameFile(const std::string& input, const std::string& output) {
  std::error_code unknown;
  if (fs::is_regular_file(output, unknown) && fs::equivalent(input, output, unknown)) {
    Fail("{} is both read and written; choose another output file", output);
  }
}

void PrintText(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    Fail("cannot write standard output: {}", std::strerror(errno));
  }
}

void WriteText(const std::string& path, std::string_view text) {
  if (path.empty()) return PrintText(text);
  TextOutput output(path);
  output.Write(text);
  output.Finish();
}

}  // namespace passband_cli
