#pragma once

#include "prepare/checks/InputSet.h"

namespace qvre {

/// Everything in which the parts of a set do not fit together, cluster first, fluctuation last. A part that
/// holds what is no finite number is reported and otherwise left out. Prints nothing; throws ZfError for a
/// file of the set that cannot be read.
InputFindings CheckInputs(const InputSet& inputs);

bool FitsTogether(const InputFindings& findings);  ///< no misfit among them

}  // namespace qvre
