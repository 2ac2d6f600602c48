// The design of an IIR filter, whatever its family: prototype, band mapping, discretisation, result form.
#pragma once

#include <cstdint>
#include <string_view>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::IIRFilters::detail {

/// What distinguishes the families beyond their prototypes.
struct Family {
  void (*prototype)(std::int32_t order, double ripple, double attenuation, TVec& z, TVec& p, double& k);
  bool exact_zeros;             // all zeros lie where the mapping puts those of an all-pole prototype
  bool unit_gain_bandstop;      // the gain of a digital bandstop is set anew, to 1 at z = 1
  bool discrete_needs_digital;  // ftZeroPoleDiscrete refuses an analog filter instead of ignoring the wish
  bool discrete_result;         // ftZeroPoleDiscrete returns the centre frequency instead of 0
  bool checks_order;            // state space: at most MaxIirOrder
  bool checks_cutoffs;          // state space: at most two cut-offs
  std::string_view state_space_precision;
};

/// One call of a design routine.
struct Request {
  const Family& family;
  std::int32_t order;
  double ripple;
  double attenuation;
  OpenArray cutoffs;
  SignalUtils::TFilterType type;
  bool analog;
};

// One function for each form of the result. They return the frequency that the band was mapped with, and write nothing
// before all has been computed.
double DesignZeroPole(const Request& request, TVec& z, TVec& p, double& k, TIirFrequencyTransform transform);
double DesignTransferFunction(const Request& request, TVec& num, TVec& den, TIirFrequencyTransform transform);
double DesignSections(const Request& request, TVec& sos, TIirFrequencyTransform transform);
double DesignStateSpace(const Request& request, TMtx& A, TVec& B, TVec& C, double& D);

}  // namespace passband::IIRFilters::detail
