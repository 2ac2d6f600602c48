#include "plot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

#include "failure.h"
#include "output_file.h"

namespace passband_cli {
namespace {

constexpr std::array kColours{"#0b5fa5", "#d1495b", "#2a9d55", "#8a5a9e", "#c77d0a", "#4d4d4d"};

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// A string in gnuplot's single quotes, where only the quote itself needs care; it ends at the end of the line.
std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += '\'';
    quoted += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return quoted + "'";
}

std::string Script(const Plot& plot) {
  std::string text;
  const auto line = [&text]<class... Args>(fmt::format_string<Args...> format, Args&&... args) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
    text += '\n';
  };
  for (std::size_t c = 0; c < plot.curves.size(); ++c) {
    line("$curve{} << END", c);
    const Curve& curve = plot.curves[c];
    for (std::size_t n = 0; n < curve.x.size(); ++n) line("{:.9g} {:.6g}", curve.x[n], curve.y[n]);
    line("END");
  }
  line("set encoding utf8");
  line("set terminal svg noenhanced size 960,540 dynamic font 'sans-serif,15' background rgb 'white' linewidth 1.2");
  line("set title {}", Quoted(plot.title));
  line("set xlabel {}", Quoted(plot.x_label));
  line("set ylabel {}", Quoted(plot.y_label));
  line("set grid linecolor rgb '#d8d8d8'");
  const bool legend =
      std::any_of(plot.curves.begin(), plot.curves.end(), [](const Curve& c) { return !c.name.empty(); });
  if (!legend) line("unset key");
  if (legend) line("set key top right opaque box linecolor rgb '#b0b0b0'");
  line("set format x {}", plot.log_x ? "'%.0f'" : "'%.6g'");
  if (plot.log_x) line("set logscale x");
  if (plot.log_x) line("set xtics add (20, 50, 200, 500, 2000, 5000, 20000, 50000)");
  line("set xrange [{:.9g}:{:.9g}]", plot.x_min, plot.x_max);
  line("set yrange [{:.9g}:{:.9g}]", plot.y_min, plot.y_max);
  for (const double mark : plot.marks) {
    line("set arrow from {0:.9g}, graph 0 to {0:.9g}, graph 1 nohead back dashtype 2 linecolor rgb '#808080'", mark);
  }
  std::string curves;
  for (std::size_t c = 0; c < plot.curves.size(); ++c) {
    const std::string& name = plot.curves[c].name;
    fmt::format_to(std::back_inserter(curves), "{} $curve{} with lines linewidth 1.4 linecolor rgb '{}' {}",
                   c > 0 ? "," : "", c, kColours[c % kColours.size()],
                   name.empty() ? "notitle" : "title " + Quoted(name));
  }
  line("plot{}", curves);
  return text;
}

// Runs gnuplot with the script as its input, the picture as its output. Returns the exit status.
int RunGnuplot(std::FILE* script, std::FILE* picture, std::FILE* messages) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(script), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(picture), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(messages), STDERR_FILENO);
  std::array<char, 8> name{"gnuplot"};
  std::array<char*, 2> arguments{name.data(), nullptr};
  pid_t process = 0;
  const int status = posix_spawnp(&process, name.data(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (status == ENOENT) Fail("gnuplot draws the plots, and it is not installed (Debian: gnuplot-nox)");
  if (status != 0) Fail("cannot start gnuplot: {}", std::strerror(status));
  int result = 0;
  while (waitpid(process, &result, 0) < 0 && errno == EINTR) {
  }
  return result;
}

std::string ContentsOf(std::FILE* file) {
  std::rewind(file);
  std::string contents;
  std::array<char, 4096> buffer{};
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file)) {
    contents.append(buffer.data(), count);
  }
  return contents;
}

// gnuplot shows the place of an error first and says what it is at the end.
std::string LastLine(std::string text) {
  text.erase(text.find_last_not_of(" \r\n") + 1);
  return text.substr(text.find_last_of("\r\n") + 1);
}

File TemporaryFile() {
  File file(std::tmpfile());
  if (!file) Fail("cannot make a temporary file for gnuplot: {}", std::strerror(errno));
  return file;
}

}  // namespace

void CheckPlotPath(const std::string& path) {
  if (!path.ends_with(".svg")) Fail("cannot draw {}: plots are SVG files, with the extension .svg", path);
}

// Script and picture go through files rather than pipes, so that neither side can leave the other one waiting.
void DrawSvg(const Plot& plot, const std::string& path) {
  const File script = TemporaryFile();
  const File picture = TemporaryFile();
  const File messages = TemporaryFile();
  const std::string text = Script(plot);
  if (std::fwrite(text.data(), 1, text.size(), script.get()) != text.size() || std::fflush(script.get()) != 0) {
    Fail("cannot write a temporary file for gnuplot: {}", std::strerror(errno));
  }
  std::rewind(script.get());
  const int result = RunGnuplot(script.get(), picture.get(), messages.get());
  const std::string svg = ContentsOf(picture.get());
  if (result != 0 || svg.find("</svg>") == std::string::npos) {
    Fail("gnuplot could not draw {}: {}", path, LastLine(ContentsOf(messages.get())));
  }
  TextOutput output(path);
  output.Write(svg);
  output.Finish();
}

}  // namespace passband_cli
