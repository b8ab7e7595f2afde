#pragma once

#include <string>
#include <vector>

#include "structure/FitReport.h"

/// The names of the files of a fit, in its folder.
namespace qvre::fit_files {

constexpr const char* kText = "report.txt";
constexpr const char* kPages = "report.pdf";  ///< all pictures
constexpr const char* kJson = "fit.json";
constexpr const char* kEvaluations = "evaluations.csv";
constexpr const char* kProfiles = "profiles.csv";
constexpr const char* kBestCluster = "best.xyz";
constexpr const char* kBestCell = "best.cif";
constexpr const char* kStructure = "structure.png";
constexpr const char* kCorrelations = "correlations.png";
constexpr const char* kCourse = "course.png";

/// The parts that the names of data sets have in names of files: letters of ASCII, digits and ".-_" as they
/// are, all else as "_"; what has become alike, in capitals or not, gets numbers.
std::vector<std::string> PartsOfNames(const std::vector<FittedData>& data);

// Of a part.
std::string Comparison(const std::string& data);           ///< "comparison_map.csv"
std::string DataPicture(const std::string& data);          ///< "data_map.png"
std::string ProfilePicture(const std::string& parameter);  ///< "profile_d12.png"

}  // namespace qvre::fit_files
