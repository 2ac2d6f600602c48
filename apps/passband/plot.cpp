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
    for (std::size_t n = 0; n < curve.x.size(); ++n) {
      if (std::isnan(curve.y[n])) {
        script.Line("");  // an empty line separates two lines of the picture
      } else {
        script.Line("{:.9g} {:.6g}", curve.x[n], curve.y[n]);
      }
    }
    script.Line("END");
  }
}

void AddImage(Script& script, const Plot& plot, std::size_t panel) {
  const Image& image = plot.image;
  if (image.values.empty()) return;
  script.Line("$image{} << END", panel);
  std::string row;
  for (std::size_t n = 0; n < image.values.size(); ++n) {
    fmt::format_to(std::back_inserter(row), "{:.4g} ", image.values[n]);
    if ((n + 1) % image.columns != 0) continue;
    script.Line("{}", row);
    row.clear();
  }
  script.Line("END");
}

// The image as the first thing that a plot command draws, its pixels spread over the axes.
std::string DrawImage(const Plot& plot, std::size_t panel) {
  const Image& image = plot.image;
  if (image.values.empty()) return "";
  const double wide = (plot.x_max - plot.x_min) / static_cast<double>(image.columns);
  const double high =
      (plot.y_max - plot.y_min) * static_cast<double>(image.columns) / static_cast<double>(image.values.size());
  return fmt::format(" $image{} matrix using ({:.9g}+($1+0.5)*{:.9g}):({:.9g}+($2+0.5)*{:.9g}):3 with image notitle",
                     panel, plot.x_min, wide, plot.y_min, high);
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
  if (marker == Marker::Limit) return "lines linewidth 2.5 dashtype 2";
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
  if (!plot.image.values.empty()) {
    script.Line("set palette defined (0 '#0d0887', 0.35 '#9c179e', 0.65 '#ed7953', 1 '#f0f921')");
    script.Line("set cbrange [{:.9g}:{:.9g}]", plot.image.lowest, plot.image.highest);
    script.Line("set cblabel {}", Quoted(plot.image.label));
  }
  std::string curves = DrawImage(plot, panel);
  for (std::size_t c = 0; c < plot.curves.size(); ++c) {
    const Curve& curve = plot.curves[c];
    fmt::format_to(std::back_inserter(curves), "{} $curve{}_{} with {} linecolor rgb '{}' {}",
                   curves.empty() ? "" : ",", panel, c, Style(curve.marker), kColours[c % kColours.size()],
                   curve.name.empty() ? "notitle" : "title " + Quoted(curve.name));
  }
  script.Line("plot{}", curves);
}

std::string ScriptOf(std::span<const Plot> panels, const std::string& title, const std::string& prefix) {
  const bool several = panels.size() > 1;
  const std::size_t columns = std::min<std::size_t>(panels.size(), 2);
  const std::size_t rows = (panels.size() + 1) / 2;
  Script script;
  for (std::size_t k = 0; k < panels.size(); ++k) {
    AddPoints(script, panels[k], k);
    AddImage(script, panels[k], k);
  }
  script.Line("set encoding utf8");
  script.Line(
      "set terminal svg noenhanced size {},{} dynamic font 'sans-serif,15' name '{}' background rgb 'white' "
      "linewidth 1.2",
      several ? 1440 : 960, several ? 500 * rows : 540, prefix);
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

// Script and picture go through files rather than pipes, so that neither side can leave the other one waiting.
std::string Draw(const std::string& text, const std::string& what) {
  const File script = TemporaryFile();
  const File picture = TemporaryFile();
  const File messages = TemporaryFile();
  if (std::fwrite(text.data(), 1, text.size(), script.get()) != text.size() || std::fflush(script.get()) != 0) {
    Fail("cannot write a temporary file for gnuplot: {}", std::strerror(errno));
  }
  std::rewind(script.get());
  const int result = RunGnuplot(script.get(), picture.get(), messages.get());
  std::string svg = ContentsOf(picture.get());
  if (result != 0 || svg.find("</svg>") == std::string::npos) {
    Fail("gnuplot could not draw {}: {}", what, LastLine(ContentsOf(messages.get())));
  }
  return svg;
}

constexpr const char* kPrefix = "gnuplot";

}  // namespace

void CheckPlotPath(const std::string& path) {
  if (!path.ends_with(".svg")) Fail("cannot draw {}: plots are SVG files, with the extension .svg", path);
}

void DrawSvg(const Plot& plot, const std::string& path) { DrawSvg(std::span(&plot, 1), "", path); }

void DrawSvg(std::span<const Plot> panels, const std::string& title, const std::string& path) {
  const std::string svg = Draw(ScriptOf(panels, title, kPrefix), path);
  TextOutput output(path);
  output.Write(svg);
  output.Finish();
}

std::string SvgOf(const Plot& plot, const std::string& prefix) {
  return Draw(ScriptOf(std::span(&plot, 1), "", prefix), plot.title);
}

}  // namespace passband_cli
