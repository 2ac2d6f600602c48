#include <cstdio>
#include <passband/passband.h>

int main() {
  passband::TVec window{1, 1, 1, 1, 1};
  passband::SignalUtils::Hanning(window);
  std::printf("%g %g %g\n", window[0], window[1], window[2]);
  return window[2] == 1 && window[1] == 0.5 ? 0 : 1;
}
