// Output files appear whole or not at all.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace passband_cli {

/// The place where a command writes a result. A regular file is written under a name of its own beside `path` and takes
/// the place of `path` when it is complete; a command that fails leaves an older file as it was and no half a file.
/// Devices and pipes (/dev/stdout, /dev/null) are written directly.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// What the user asked for, as it stands in messages.
  const std::string& Path() const { return path_; }
  /// What is to be opened and written.
  const std::string& WritePath() const { return write_path_; }
  /// Puts the written file in its place; the caller has closed it.
  void Commit();

 private:
  std::string path_;
  std::string target_;  // empty when `write_path_` is written directly
  std::string write_path_;
};

/// A text written piece by piece into an `OutputFile`.
class TextOutput {
 public:
  explicit TextOutput(const std::string& path);

  void Write(std::string_view text);
  /// Closes the file and puts it in its place.
  void Finish();

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  OutputFile output_;
  std::unique_ptr<std::FILE, Closer> file_;
};

/// Refuses an output that is the same file as an input, which would be lost while it is read.
void RefuseSameFile(const std::string& input, const std::string& output);

/// Writes to standard output and makes sure that the text got there.
void PrintText(std::string_view text);

/// Writes a file, or to standard output when `path` is empty.
void WriteText(const std::string& path, std::string_view text);

}  // namespace passband_cli
