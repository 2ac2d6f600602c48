#include <cstdio>
#include <passband/passband.h>

int main() {
  try {
    passband::SignalUtils::TFirState state;
    passband::SignalUtils::FirInit(passband::TVec{}, state);
  } catch (const passband::Exception& refused) {
    return std::puts(refused.what()) < 0;
  }
  return 1;
}
