#pragma once

#include <string>
#include <vector>

#include "fit/ParameterSpace.h"
#include "fit/Trial.h"

namespace qvre {

/// A line of the table of evaluations.
struct EvaluationRecord {
    int number = 0;      ///< from 1
    int generation = 0;  ///< as the search counts
    FitPoint point;
    double misfit = 0.0;  ///< infinite: failed
    double r = 0.0;
    std::vector<double> dataSetR;  ///< empty: failed
    double seconds = 0.0;
    std::string failure;
};

/// The file of all evaluations of a fit, comma-separated:
///     number,generation,<each parameter>,misfit,R,<R of each data set>,seconds,failure
/// Numbers are read back to the last bit; those of a failed evaluation are empty. Lines are only ever added,
/// whole generations at once.
class EvaluationTable {
public:
    /// Opens the file, or begins it with its title line. Of a former run the first `kept` evaluations stay
    /// (all: a negative number) and what stands behind is cut off, be it the half line of a program that was
    /// killed. Throws ZfError "path: reason", such as for the parameters or data sets of another fit, by
    /// name, or for fewer evaluations than are to be kept.
    EvaluationTable(std::string path, const ParameterSpace& space, const std::vector<std::string>& dataSets,
                    int kept = -1);

    /// Throws ZfError when the file cannot be written.
    void Append(int generation, const std::vector<Trial>& trials);

    std::vector<EvaluationRecord> records;

private:
    void Load(const std::string& text, int kept);
    EvaluationRecord ReadRecord(const std::vector<std::string>& fields) const;
    std::string Line(const EvaluationRecord& record) const;
    void WriteBehind(const std::string& text) const;

    std::string path_;
    std::vector<std::string> titles_;
    std::size_t parameters_;
    std::size_t dataSets_;
};

}  // namespace qvre
