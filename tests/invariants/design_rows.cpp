#include "tests/invariants/design_rows.h"

#include <utility>

namespace passband::test {
namespace {

using namespace LinearSystems;
using namespace IIRFilters;
using enum SignalUtils::TFilterType;
using enum TIirFrequencyTransform;
using enum TMtxFloatPrecision;

TVec Anything() { return Noise(5, DoubleComplex, 3); }
TVec Conjugates() { return {{-1, 2}, {-1, -2}, {-3, 0.5}, {-3, -0.5}, {-0.5, 0}}; }
TVec Coefficients() { return {1.0, 0.5, 0.25, 0.125}; }

// A call with two vectors, watched through either of them.
template <class Call>
void AddPair(std::vector<CallRow>& rows, const std::string& name, TVec (*output)(), Call call) {
  rows.push_back({name + ", first result", output, [=](TVec& v) {
                    TVec other = output();
                    call(v, other);
                  }});
  rows.push_back({name + ", second result", output, [=](TVec& v) {
                    TVec other = output();
                    call(other, v);
                  }});
}

}  // namespace

std::vector<CallRow> DesignRows() {
  std::vector<CallRow> rows;
  for (const auto transform : {ftStateSpaceAnalog, ftZeroPoleAnalog, ftZeroPoleDiscrete}) {
    const std::string route = " by route " + std::to_string(static_cast<int>(transform));
    AddPair(rows, "EllipticFilter zeros and poles" + route, Anything, [=](TVec& z, TVec& p) {
      double k = 0;
      EllipticFilter(3, 1, 40, {0.2, 0.3}, ftBandpass, false, z, p, k, transform);
    });
    AddPair(rows, "ChebyshevIFilter transfer function" + route, Anything,
            [=](TVec& num, TVec& den) { ChebyshevIFilter(3, 1, {0.2}, ftHighpass, false, num, den, transform); });
    rows.push_back({"BesselFilter sections" + route, Anything, [=](TVec& sos) {
                      BesselFilter(3, {0.2, 0.3}, ftBandstop, false, sos, transform);
                    }});
  }
  AddPair(rows, "ButterFilter state space", Anything, [](TVec& B, TVec& C) {
    TMtx A;
    double D = 0;
    ButterFilter(3, {0.2}, ftLowpass, false, A, B, C, D);
  });
  AddPair(rows, "ZeroPoleToTransferFun", Anything,
          [](TVec& num, TVec& den) { ZeroPoleToTransferFun(num, den, Conjugates(), Conjugates(), 2); });
  AddPair(rows, "TransferFunToZeroPole", Anything, [](TVec& z, TVec& p) {
    double k = 0;
    TransferFunToZeroPole(z, p, k, Coefficients(), Coefficients());
  });
  AddPair(rows, "LowpassToBandpass", Conjugates, [](TVec& z, TVec& p) {
    double k = 1;
    LowpassToBandpass(z, p, k, 2, 0.5);
  });
  AddPair(rows, "Bilinear", Conjugates, [](TVec& z, TVec& p) {
    double k = 1;
    Bilinear(z, p, k, 2);
  });
  AddPair(rows, "LowpassToBandStopZ", Conjugates, [](TVec& z, TVec& p) {
    double k = 1;
    LowpassToBandStopZ(z, p, k, 0.3, 0.1, 0.5);
  });
  AddPair(rows, "RationalSubstitution", Coefficients, [](TVec& num, TVec& den) {
    RationalSubstitution(num, den, {1.0, -0.5}, {-0.5, 1.0});
  });
  AddPair(rows, "NotchFilter", Anything, [](TVec& num, TVec& den) { SignalUtils::NotchFilter(0.1, 0.9, num, den); });
  AddPair(rows, "DcFilter", Anything, [](TVec& num, TVec& den) { SignalUtils::DcFilter(0.9, num, den); });
  AddPair(rows, "ExpAverageFilter", Anything, [](TVec& num, TVec& den) { SignalUtils::ExpAverageFilter(5, num, den); });
  rows.push_back({"ZeroPoleToSOS", Anything, [](TVec& sos) {
                    TVec z = Conjugates();
                    TVec p = Conjugates();
                    ZeroPoleToSOS(sos, z, p, 2);
                  }});
  rows.push_back({"SortConj", Conjugates, [](TVec& v) { SignalUtils::SortConj(v, 1e-9); }});
  return rows;
}

std::vector<CallRow> RefusedDesignRows() {
  std::vector<CallRow> rows;
  AddPair(rows, "ButterFilter band", Anything, [](TVec& z, TVec& p) {
    double k = 0;
    ButterFilter(3, {0.3, 0.2}, ftBandpass, false, z, p, k);
  });
  AddPair(rows, "EllipticFilter order", Anything,
          [](TVec& num, TVec& den) { EllipticFilter(51, 1, 40, {0.2}, ftLowpass, false, num, den); });
  AddPair(rows, "NotchFilter radius", Anything,
          [](TVec& num, TVec& den) { SignalUtils::NotchFilter(0.1, 2, num, den); });
  AddPair(rows, "DcFilter bandwidth", Anything, [](TVec& num, TVec& den) { SignalUtils::DcFilter(3, 4, num, den); });
  rows.push_back({"Bilinear of more zeros than poles", Conjugates, [](TVec& z) {
                    TVec p = {-1.0};
                    double k = 1;
                    Bilinear(z, p, k, 2);
                  }});
  AddPair(rows, "RationalSubstitution of complex coefficients", Anything, [](TVec& num, TVec& den) {
    RationalSubstitution(num, den, {1.0, -0.5}, {-0.5, 1.0});
  });
  return rows;
}

}  // namespace passband::test
