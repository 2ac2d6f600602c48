#include "tests/invariants/rows.h"

namespace passband::test {

using namespace SignalUtils;
using enum TSignalWindowMode;
using enum TSignalWindowType;

const std::vector<RangedRow>& RangedRows() {
  using Int = std::int32_t;
  static const std::vector<RangedRow> rows{
      {"Hanning", [](TVec& v, Int i, Int n) { Hanning(v, wmSymmetric, i, n); }},
      {"Hanning periodic", [](TVec& v, Int i, Int n) { Hanning(v, wmPeriodic, i, n); }},
      {"Hamming", [](TVec& v, Int i, Int n) { Hamming(v, wmSymmetric, i, n); }},
      {"Hamming periodic", [](TVec& v, Int i, Int n) { Hamming(v, wmPeriodic, i, n); }},
      {"Blackman", [](TVec& v, Int i, Int n) { Blackman(v, -0.16, wmSymmetric, i, n); }},
      {"Blackman periodic", [](TVec& v, Int i, Int n) { Blackman(v, -0.3, wmPeriodic, i, n); }},
      {"BlackmanOptimal", [](TVec& v, Int i, Int n) { BlackmanOptimal(v, i, n); }},
      {"Bartlett", [](TVec& v, Int i, Int n) { Bartlett(v, i, n); }},
      {"BlackmanExact", [](TVec& v, Int i, Int n) { BlackmanExact(v, wmSymmetric, i, n); }},
      {"BlackmanExact periodic", [](TVec& v, Int i, Int n) { BlackmanExact(v, wmPeriodic, i, n); }},
      {"BlackmanHarris", [](TVec& v, Int i, Int n) { BlackmanHarris(v, wmSymmetric, i, n); }},
      {"FlatTop", [](TVec& v, Int i, Int n) { FlatTop(v, wmSymmetric, i, n); }},
      {"FlatTop periodic", [](TVec& v, Int i, Int n) { FlatTop(v, wmPeriodic, i, n); }},
      {"Kaiser", [](TVec& v, Int i, Int n) { Kaiser(v, 6.5, i, n); }},
      {"FractionalKaiser", [](TVec& v, Int i, Int n) { FractionalKaiser(v, 6.5, 0.3, 1, i, n); }},
      {"Chebyshev", [](TVec& v, Int i, Int n) { Chebyshev(v, 40, i, n); }},
      {"CosineTappered", [](TVec& v, Int i, Int n) { CosineTappered(v, 30, i, n); }},
      {"ExponentWindow", [](TVec& v, Int i, Int n) { ExponentWindow(v, 0.01, i, n); }},
      {"SignalWindow normalized", [](TVec& v, Int i, Int n) { SignalWindow(v, wtFlatTop, 0, wmPeriodic, true, i, n); }},
      {"RemoveDC", [](TVec& v, Int i, Int n) { RemoveDC(v, i, n); }},
      {"MedianFilter",
       [](TVec& v, Int i, Int n) {
         if (v.Complex()) return v.Offset(0.0, i, n);  // it takes real data only
         MedianFilter(v, 7, i, n);
       }},
      {"SetVal", [](TVec& v, Int i, Int n) { v.SetVal(2.5, i, n); }},
      {"SetZero", [](TVec& v, Int i, Int n) { v.SetZero(i, n); }},
      {"Offset", [](TVec& v, Int i, Int n) { v.Offset(2.5, i, n); }},
      {"Scale", [](TVec& v, Int i, Int n) { v.Scale(-1.5, i, n); }},
      {"Ramp", [](TVec& v, Int i, Int n) { v.Ramp(0.5, 0.1, i, n); }},
      {"Add", [](TVec& v, Int i, Int n) { v.Add(v, i, i, n); }},
      {"Mul", [](TVec& v, Int i, Int n) { v.Mul(v, i, i, n); }},
      {"Sub", [](TVec& v, Int i, Int n) { v.Sub(v, v, i, i, i, n); }},
      {"Divide", [](TVec& v, Int i, Int n) { v.Divide(v, i, i, n); }},
      {"Copy", [](TVec& v, Int i, Int n) { v.Copy(v, i, i, n); }},
      {"Reverse", [](TVec& v, Int i, Int n) { v.Reverse(v, i, i, n); }},
  };
  return rows;
}

}  // namespace passband::test
