// Running a test on every instruction set that this machine has.
#pragma once

#include <gtest/gtest.h>
#include <hwy/targets.h>

namespace passband::primitives {

/// Runs the body once for each instruction set of this machine.
template <class Body>
void OnEveryTarget(const Body& body) {
  for (const auto target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    SCOPED_TRACE(hwy::TargetName(target));
    body();
  }
  hwy::SetSupportedTargetsForTest(0);
}

}  // namespace passband::primitives
