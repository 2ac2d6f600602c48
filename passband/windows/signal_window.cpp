#include "passband/windows/signal_window.h"

#include "passband/foundation/complex.h"
#include "passband/foundation/exceptions.h"
#include "passband/windows/bartlett.h"
#include "passband/windows/chebyshev.h"
#include "passband/windows/cosine_tapered.h"
#include "passband/windows/cosine_windows.h"
#include "passband/windows/exponent_window.h"
#include "passband/windows/kaiser.h"

namespace passband::SignalUtils {
namespace {

using enum TSignalWindowType;

constexpr double kTaperPercent = 20;

void Window(TVec& data, TSignalWindowType type, double param, TSignalWindowMode mode, std::int32_t index,
            std::int32_t len) {
  switch (type) {
    case wtRectangular:
      return;
    case wtHanning:
      Hanning(data, mode, index, len);
      return;
    case wtHamming:
      Hamming(data, mode, index, len);
      return;
    case wtFlatTop:
      FlatTop(data, mode, index, len);
      return;
    case wtBartlett:
      Bartlett(data, index, len);
      return;
    case wtBlackman:
      Blackman(data, param, mode, index, len);
      return;
    case wtBlackmanHarris:
      BlackmanHarris(data, mode, index, len);
      return;
    case wtBlackmanExact:
      BlackmanExact(data, mode, index, len);
      return;
    case wtCosineTappered:
      CosineTappered(data, kTaperPercent, index, len);
      return;
    case wtKaiser:
      Kaiser(data, param, index, len);
      return;
    case wtChebyshev:
      Chebyshev(data, param, index, len);
      return;
    case wtExponent:
      ExponentWindow(data, param, index, len);
      return;
  }
  ERaise("SignalWindow: no such window");
}

}  // namespace

void SignalWindow(TVec& Vec, TSignalWindowType WindowType, double WindowParam, TSignalWindowMode WindowMode,
                  bool Normalize, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  Window(Vec, WindowType, WindowParam, WindowMode, Index, Len);
  if (!Normalize || WindowType == wtRectangular || Len == 0) return;
  if (Vec.Complex()) {
    Vec.Scale(CInv(Vec.Meanc(Index, Len)), Index, Len);
  } else {
    Vec.Scale(1 / Vec.Mean(Index, Len), Index, Len);
  }
}

}  // namespace passband::SignalUtils
