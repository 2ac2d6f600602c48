// Tracks a pendulum with the extended Kalman filter: a noisy camera sees how far the bob is to the side, the filter
// estimates angle and angular velocity. Draws state, measurement and the band of three standard deviations as SVG.
//
//   example_pendulum [PICTURE.svg]
#include <passband/passband.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace passband;
using namespace passband::AdaptiveFiltering;

constexpr double kStep = 0.01;             // s
constexpr double kStiffness = 9.81 / 1.5;  // gravity over length, 1/s^2
constexpr double kCameraNoise = 0.15;      // standard deviation, in lengths of the pendulum
constexpr double kPushNoise = 0.02;        // of the angular velocity in a step, rad/s
constexpr int kSteps = 1000;

// One step of the pendulum (symplectic Euler, which keeps its energy).
void Swing(double& angle, double& velocity) {
  velocity -= kStep * kStiffness * std::sin(angle);
  angle += kStep * velocity;
}

void SetUp(TExtendedKalmanFilter& filter) {
  filter.x = TMtx(2, 1, {0.5, 0});  // a guess
  filter.P = TMtx(2, 2, {0.5, 0, 0, 0.5});
  filter.Q = TMtx(1, 1, {kPushNoise * kPushNoise});
  filter.W = TMtx(2, 1, {kStep, 1});  // a push changes the velocity, and through it the angle
  filter.R = TMtx(1, 1, {kCameraNoise * kCameraNoise});
  filter.z = TMtx(1, 1, {0});
  filter.A.Size(2, 2, TMtxFloatPrecision::DoubleReal);
  filter.H.Size(1, 2, TMtxFloatPrecision::DoubleReal);
  filter.SetOnGenerateProcess([&filter](TMtx& x) {
    const double pull = kStep * kStiffness * std::cos(x(0, 0));  // the Jacobian of a step, at the state before it
    filter.A.Values(0, 0) = 1 - kStep * pull;
    filter.A.Values(0, 1) = kStep;
    filter.A.Values(1, 0) = -pull;
    filter.A.Values(1, 1) = 1;
    Swing(x.Values(0, 0), x.Values(1, 0));
    filter.H.Values(0, 0) = std::cos(x(0, 0));  // that of the measurement, at the predicted state
    filter.H.Values(0, 1) = 0;
  });
  filter.SetOnGenerateMeasurement([&filter](TMtx& z) { z.Values(0, 0) = std::sin(filter.x(0, 0)); });
}

struct Record {
  std::vector<double> truth, measured, estimate, deviation;  // of the angle
};

Record Track() {
  std::mt19937 generator(7);
  std::normal_distribution<double> normal;
  TExtendedKalmanFilter filter;
  SetUp(filter);
  double angle = 1.2;
  double velocity = 0;
  Record record;
  for (int step = 0; step < kSteps; ++step) {
    velocity += kPushNoise * normal(generator);
    Swing(angle, velocity);
    const double seen = std::sin(angle) + kCameraNoise * normal(generator);
    filter.z.Values(0, 0) = seen;
    filter.Update();
    record.truth.push_back(angle);
    record.measured.push_back(seen);
    record.estimate.push_back(filter.x(0, 0));
    record.deviation.push_back(std::sqrt(filter.P(0, 0)));
  }
  return record;
}

void Report(const Record& record) {
  double camera = 0;
  double filter = 0;
  int inside = 0;
  int settled = 0;
  for (std::size_t n = kSteps / 10; n < record.truth.size(); ++n) {  // when it has settled
    const double error = record.estimate[n] - record.truth[n];
    camera += std::pow(record.measured[n] - std::sin(record.truth[n]), 2);
    filter += error * error;
    inside += std::abs(error) <= 3 * record.deviation[n] ? 1 : 0;
    ++settled;
  }
  std::printf("error of the camera  %.4f\n", std::sqrt(camera / settled));
  std::printf("error of the filter  %.4f rad\n", std::sqrt(filter / settled));
  std::printf("inside three sigma   %.1f %%\n", 100.0 * inside / settled);
}

// A curve as the points of an SVG path.
class Picture {
 public:
  void Band(const Record& record) {
    std::string path = "M";
    const auto count = record.estimate.size();
    for (std::size_t n = 0; n < count; ++n) path += Point(n, record.estimate[n] + 3 * record.deviation[n]);
    for (std::size_t n = count; n-- > 0;) path += Point(n, record.estimate[n] - 3 * record.deviation[n]);
    body_ += "<path fill=\"#0b5fa5\" fill-opacity=\"0.18\" stroke=\"none\" d=\"" + path + "Z\"/>\n";
  }
  void Line(const std::vector<double>& values, const char* colour, const char* name) {
    std::string path = "M";
    for (std::size_t n = 0; n < values.size(); ++n) path += Point(n, values[n]);
    body_ += "<path fill=\"none\" stroke-width=\"1.5\" stroke=\"" + std::string(colour) + "\" d=\"" + path + "\"/>\n";
    Name(colour, name);
  }
  void Dots(const std::vector<double>& values, const char* colour, const char* name) {
    for (std::size_t n = 0; n < values.size(); n += 4) {
      char text[120];
      std::snprintf(text, sizeof text, "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"1.6\" fill=\"%s\"/>\n", X(n), Y(values[n]),
                    colour);
      body_ += text;
    }
    Name(colour, name);
  }
  bool Write(const char* path) const {
    std::FILE* file = std::fopen(path, "w");
    if (file == nullptr) return false;
    std::fprintf(file,
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1000 440\" font-family=\"sans-serif\" "
                 "font-size=\"14\">\n<rect width=\"1000\" height=\"440\" fill=\"white\"/>\n"
                 "<path stroke=\"#b0b0b0\" d=\"M50 220H980M50 20V400\"/>\n"
                 "<text x=\"460\" y=\"430\">time, 0 to %g s</text>\n"
                 "<text x=\"8\" y=\"24\">%.1f rad</text><text x=\"8\" y=\"404\">-%.1f rad</text>\n%s</svg>\n",
                 kSteps * kStep, kRange, kRange, body_.c_str());
    return std::fclose(file) == 0;
  }

 private:
  static constexpr double kRange = 1.8;  // rad
  static double X(std::size_t n) { return 50 + 930 * static_cast<double>(n) / kSteps; }
  static double Y(double value) { return 220 - 190 * value / kRange; }
  static std::string Point(std::size_t n, double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.1f %.1f ", X(n), Y(value));
    return text;
  }
  void Name(const char* colour, const char* name) {
    char text[160];
    std::snprintf(text, sizeof text, "<text x=\"%d\" y=\"20\" fill=\"%s\">%s</text>\n", 120 + 220 * names_++, colour,
                  name);
    body_ += text;
  }

  std::string body_;
  int names_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  try {
    const Record record = Track();
    Report(record);
    if (argc < 2) return 0;
    Picture picture;
    picture.Band(record);
    picture.Dots(record.measured, "#c77d0a", "camera (sine of the angle)");
    picture.Line(record.truth, "#2a9d55", "true angle");
    picture.Line(record.estimate, "#0b5fa5", "estimate and 3 sigma");
    if (picture.Write(argv[1])) return 0;
    std::fprintf(stderr, "pendulum: cannot write %s\n", argv[1]);
  } catch (const std::exception& error) {  // every failure of the library arrives here, with its reason
    std::fprintf(stderr, "pendulum: %s\n", error.what());
  }
  return 1;
}
