#pragma once

#include <string>

#include "prepare/checks/InputCheck.h"

// What InputCheck is made of: each appends its findings.

void CheckCluster(const InputSet& inputs, std::vector<InputFinding>& findings);
void CheckWaves(const InputSet& inputs, std::vector<InputFinding>& findings);
void CheckPhaseShifts(const InputSet& inputs, std::vector<InputFinding>& findings);
void CheckFluctuation(const InputSet& inputs, std::vector<InputFinding>& findings);

/// "structure 1: " where there is more than one.
std::string StructurePrefix(const ZfCluster& cluster, std::size_t index);

/// Shortest text that reads back as the same number: energies are compared to the last bit.
std::string ExactText(double value);
