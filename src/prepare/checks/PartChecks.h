#pragma once

#include "prepare/checks/InputSet.h"

// What the check of a whole set consists of: each appends its findings.

namespace qvre {

/// Numbers that are none, or infinite. Returns the set without the parts that hold them.
InputSet CheckNumbers(const InputSet& inputs, InputFindings& findings);

/// Words such as "nan" and "inf" in place of the numbers of a file: loading takes them for 0, so that nothing
/// in a document tells of them. Text matrices keep them as they are, and CheckNumbers finds them. Throws
/// ZfError for a file that cannot be read.
void CheckNumberWords(const InputSet& inputs, InputFindings& findings);

// Those of one part, which is not null, and of what it needs of the others.
void CheckCluster(const InputSet& inputs, InputFindings& findings);
void CheckWaves(const InputSet& inputs, InputFindings& findings);
void CheckPhaseShifts(const InputSet& inputs, InputFindings& findings);
void CheckFluctuation(const InputSet& inputs, InputFindings& findings);

/// Atoms that stand, within a millionth of the radius, on the edge of the cylinder by which MULTI chooses the
/// sources of a target: whether they count is a matter of rounding, so that equivalent directions differ.
void CheckCylinders(const InputSet& inputs, InputFindings& findings);

}  // namespace qvre
