#include "plot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
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

// A gnuplot script, line by line.
class Script {
 public:
  template <class... Args>
  void Line(fmt::format_string<Args...> format, Args&&... args) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Args>(args)...);
    text_ += '\n';
  }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

// The points of a plot, under names that only they have.
void AddPoints(Script& script, const Plot& plot, std::size_t panel) {
  for (std::size_t c = 0; c < plot.curves.size(); ++c) {
    script.Line("$curve{}_{} << END", panel, c);
    const Curve& curve = plot.curves[c];
    for (std::size_t n = 0; n < curve.x.size(); ++n) script.Line("{:.9g} {:.6g}", curve.x[n], curve.y[n]);
    script.Line("END");
  }
}

// One, two or five times a power of ten, of which an axis holds three to eight.
double TicStep(double span) {
  const double most = span / 3;
  const double decade = std::pow(10.0, std::floor(std::log10(most)));
  return decade * (most >= 5 * decade ? 5 : most >= 2 * decade ? 2 : 1);
}

void AddAxes(Script& script, const Plot& plot) {
  script.Line("set title {}", Quoted(plot.title));
  script.Line("set xlabel {}", Quoted(plot.x_label));
  script.Line("set ylabel {}", Quoted(plot.y_label));
  script.Line("set grid linecolor rgb '#d8d8d8'");
  const bool legend =
      std::any_of(plot.curves.begin(), plot.curves.end(), [](const Curve& c) { return !c.name.empty(); });
  if (!legend) script.Line("unset key");
  if (legend) {
    script.Line("set key {} top right opaque box linecolor rgb '#b0b0b0'", plot.same_scales ? "outside" : "inside");
  }
  script.Line("set format x '%.6g'");
  script.Line("{}", plot.log_x ? "set logscale x" : "unset logscale");
  script.Line("set tics {}", plot.same_scales ? fmt::format("{:.9g}", TicStep(plot.x_max - plot.x_min)) : "autofreq");
  if (plot.log_x) script.Line("set xtics add (20, 50, 200, 500, 2000, 5000, 20000, 50000)");
  script.Line("set size {}", plot.same_scales ? "ratio -1" : "noratio");
  script.Line("set xrange [{:.9g}:{:.9g}]", plot.x_min, plot.x_max);
  script.Line("set yrange [{:.9g}:{:.9g}]", plot.y_min, plot.y_max);
}

std::string Style(Marker marker) {
  if (marker == Marker::Line) return "lines linewidth 1.4";
  return fmt::format("points pointsize 0.7 linewidth 1.4 pointtype {}", marker == Marker::Circle ? 6 : 2);
}

void AddPanel(Script& script, const Plot& plot, std::size_t panel) {
  AddAxes(script, plot);
  script.Line("unset arrow");
  for (const double mark : plot.marks) {
    script.Line("set arrow from {0:.9g}, graph 0 to {0:.9g}, graph 1 nohead back dashtype 2 linecolor rgb '#808080'",
                mark);
  }
  script.Line("unset label");
  for (const Label& label : plot.labels) {
    script.Line("set label {} at {:.9g}, {:.9g} offset character 0.6, 0.6", Quoted(label.text), label.x, label.y);
  }
  std::string curves;
  for (std::size_t c = 0; c < plot.curves.size(); ++c) {
    const Curve& curve = plot.curves[c];
    fmt::format_to(std::back_inserter(curves), "{} $curve{}_{} with {} linecolor rgb '{}' {}", c > 0 ? "," : "", panel,
                   c, Style(curve.marker), kColours[c % kColours.size()],
                   curve.name.empty() ? "notitle" : "title " + Quoted(curve.name));
  }
  script.Line("plot{}", curves);
}

std::string ScriptOf(std::span<const Plot> panels, const std::string& title) {
  const bool several = panels.size() > 1;
  const std::size_t columns = std::min<std::size_t>(panels.size(), 2);
  const std::size_t rows = (panels.size() + 1) / 2;
  Script script;
  for (std::size_t k = 0; k < panels.size(); ++k) AddPoints(script, panels[k], k);
  script.Line("set encoding utf8");
  script.Line(
      "set terminal svg noenhanced size {},{} dynamic font 'sans-serif,15' background rgb 'white' linewidth 1.2",
      several ? 1440 : 960, several ? 500 * rows : 540);
  if (several) script.Line("set multiplot layout {},{} title {} font ',18'", rows, columns, Quoted(title));
  for (std::size_t k = 0; k < panels.size(); ++k) AddPanel(script, panels[k], k);
  return script.Text();
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

void DrawSvg(const Plot& plot, const std::string& path) { DrawSvg(std::span(&plot, 1), "", path); }

// Script and picture go through files rather than pipes, so that neither side can leave the other one waiting.
void DrawSvg(std::span<const Plot> panels, const std::string& title, const std::string& path) {
  const File script = TemporaryFile();
  const File picture = TemporaryFile();
  const File messages = TemporaryFile();
  const std::string text = ScriptOf(panels, title);
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
