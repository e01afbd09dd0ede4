#pragma once

#include "values/Messages.h"

/// The values that every peer carries.
namespace bench {

Position SamplePosition();
AcousticObservation SampleObservation(int number);
ComputedPosition SampleComputedPosition(int observations);
MobileTransponder SampleMobileTransponder(int ranges);

}  // namespace bench
