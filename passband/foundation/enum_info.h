// Type information of the published enumerations, for hosts that build menus from them.
#pragma once

#include <span>
#include <string_view>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"

namespace passband {

/// What a host needs to list an enumeration. Everything it refers to lives as long as the library is loaded.
struct TEnumInfo {
  std::string_view TypeName;                     ///< without its unit, as in "TFilterType"
  std::string_view UnitName;                     ///< "SignalUtils", "OptimalFir" or "IIRFilters"
  std::span<const std::string_view> ValueNames;  ///< in declaration order; the position is the ordinal
};

/// All published enumerations, unit by unit.
PASSBAND_EXPORT std::span<const TEnumInfo> PublishedEnums();

/// The type information of one published enumeration.
template <class E>
const TEnumInfo& EnumInfo();

template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TFilterType>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TSignalWindowType>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TSignalWindowMode>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TSpectrumType>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TFractionalImpulse>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TRunningPhase>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TMonitorMode>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TChannel>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TWaveletType>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<SignalUtils::TWaveletDecomp>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<OptimalFir::TRemezType>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<OptimalFir::TFilterSymmetry>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<IIRFilters::TIirFilterMethod>();
template <>
PASSBAND_EXPORT const TEnumInfo& EnumInfo<IIRFilters::TIirFrequencyTransform>();

}  // namespace passband
