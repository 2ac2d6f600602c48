#include "passband/foundation/enum_info.h"

#include <array>
#include <cstddef>

namespace passband {
namespace {

template <std::size_t N>
using Names = std::array<std::string_view, N>;

constexpr Names<14> kSignalUtilsTFilterType{
    "ftLowpass", "ftHighpass", "ftBandpass", "ftBandstop", "ftHilbertIII", "ftHilbertIV", "ftDifferentiatorIII",
    "ftDifferentiatorIV", "ftDoubleDifferentiatorIII", "ftDoubleDifferentiatorIV", "ftIntegratorIII", "ftIntegratorIV",
    "ftDoubleIntegratorIII", "ftDoubleIntegratorIV"};
constexpr Names<12> kSignalUtilsTSignalWindowType{
    "wtRectangular", "wtHanning", "wtHamming", "wtFlatTop", "wtBartlett", "wtBlackman", "wtBlackmanHarris",
    "wtBlackmanExact", "wtCosineTappered", "wtKaiser", "wtChebyshev", "wtExponent"};
constexpr Names<2> kSignalUtilsTSignalWindowMode{
    "wmSymmetric", "wmPeriodic"};
constexpr Names<6> kSignalUtilsTSpectrumType{
    "spAmplt", "spRMS", "spPower", "spPeakPeak", "spRealCepstrum", "spComplex"};
constexpr Names<7> kSignalUtilsTFractionalImpulse{
    "falp_160dB", "falp_140dB", "falp_140dB2", "falp_100dB", "falp_60dB", "falp_50dB", "falp_50dB2"};
constexpr Names<4> kSignalUtilsTRunningPhase{
    "rpDefault", "rpConstPhase", "rpIntegerLag", "rpPartial"};
constexpr Names<2> kSignalUtilsTMonitorMode{
    "mmFromStart", "mmFromEnd"};
constexpr Names<6> kSignalUtilsTChannel{
    "chLeft", "chRight", "chThird", "chFourth", "chFifth", "chSixth"};
constexpr Names<10> kSignalUtilsTWaveletType{
    "wtHaar", "wtDaublet", "wtSymmlet", "wtCoiflet", "wtVaidyanathan", "wtBSpline", "wtBSplineDual", "wtLinSpline",
    "wtQuadSpline", "wtByFilter"};
constexpr Names<2> kSignalUtilsTWaveletDecomp{
    "wtApproximation", "wtDetail"};
constexpr Names<6> kOptimalFirTRemezType{
    "rmtBandPass", "rmtDifferentiator", "rmtHilbert", "rmtIntegrator", "rmtDoubleDifferentiator", "rmtDoubleIntegrator"};
constexpr Names<2> kOptimalFirTFilterSymmetry{
    "fsmPositive", "fsmNegative"};
constexpr Names<7> kIIRFiltersTIirFilterMethod{
    "fimButter", "fimChebyshevI", "fimChebyshevII", "fimElliptic", "fimDC", "fimNotch", "fimBessel"};
constexpr Names<3> kIIRFiltersTIirFrequencyTransform{
    "ftStateSpaceAnalog", "ftZeroPoleAnalog", "ftZeroPoleDiscrete"};

constexpr std::array<TEnumInfo, 14> kPublished{{
    {"TFilterType", "SignalUtils", kSignalUtilsTFilterType},
    {"TSignalWindowType", "SignalUtils", kSignalUtilsTSignalWindowType},
    {"TSignalWindowMode", "SignalUtils", kSignalUtilsTSignalWindowMode},
    {"TSpectrumType", "SignalUtils", kSignalUtilsTSpectrumType},
    {"TFractionalImpulse", "SignalUtils", kSignalUtilsTFractionalImpulse},
    {"TRunningPhase", "SignalUtils", kSignalUtilsTRunningPhase},
    {"TMonitorMode", "SignalUtils", kSignalUtilsTMonitorMode},
    {"TChannel", "SignalUtils", kSignalUtilsTChannel},
    {"TWaveletType", "SignalUtils", kSignalUtilsTWaveletType},
    {"TWaveletDecomp", "SignalUtils", kSignalUtilsTWaveletDecomp},
    {"TRemezType", "OptimalFir", kOptimalFirTRemezType},
    {"TFilterSymmetry", "OptimalFir", kOptimalFirTFilterSymmetry},
    {"TIirFilterMethod", "IIRFilters", kIIRFiltersTIirFilterMethod},
    {"TIirFrequencyTransform", "IIRFilters", kIIRFiltersTIirFrequencyTransform}
}};

}  // namespace

std::span<const TEnumInfo> PublishedEnums() { return kPublished; }

template <>
const TEnumInfo& EnumInfo<SignalUtils::TFilterType>() {
  return kPublished[0];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TSignalWindowType>() {
  return kPublished[1];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TSignalWindowMode>() {
  return kPublished[2];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TSpectrumType>() {
  return kPublished[3];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TFractionalImpulse>() {
  return kPublished[4];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TRunningPhase>() {
  return kPublished[5];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TMonitorMode>() {
  return kPublished[6];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TChannel>() {
  return kPublished[7];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TWaveletType>() {
  return kPublished[8];
}
template <>
const TEnumInfo& EnumInfo<SignalUtils::TWaveletDecomp>() {
  return kPublished[9];
}
template <>
const TEnumInfo& EnumInfo<OptimalFir::TRemezType>() {
  return kPublished[10];
}
template <>
const TEnumInfo& EnumInfo<OptimalFir::TFilterSymmetry>() {
  return kPublished[11];
}
template <>
const TEnumInfo& EnumInfo<IIRFilters::TIirFilterMethod>() {
  return kPublished[12];
}
template <>
const TEnumInfo& EnumInfo<IIRFilters::TIirFrequencyTransform>() {
  return kPublished[13];
}

}  // namespace passband
