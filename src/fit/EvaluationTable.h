#pragma once

#include <optional>
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
/// whole batches at once. A hidden file beside it keeps the residuals.
///
/// A fit that is repeated asks for the same points in the same order, and gets what the file knows of them:
/// so it goes on where a former one was stopped.
class EvaluationTable {
public:
    /// Opens the file, or begins it with its title line. Throws ZfError "path: reason", such as for the
    /// parameters or data sets of another fit, by name.
    EvaluationTable(std::string path, const ParameterSpace& space, const std::vector<std::string>& dataSets);

    /// The next evaluations of the former fit, if it made them of these points. With residuals those of which
    /// none were kept are none.
    std::optional<std::vector<Trial>> Repeat(const std::vector<FitPoint>& points, bool needsResiduals);

    /// Adds new ones, in place of what the former fit did from here on. Throws ZfError when the file cannot
    /// be written.
    void Append(int generation, const std::vector<Trial>& trials, bool keepsResiduals);

    /// Cuts off what the former fit did beyond this one.
    void End();

    std::vector<EvaluationRecord> records;

private:
    void Load(const std::string& text);
    void LoadResiduals();
    EvaluationRecord ReadRecord(const std::vector<std::string>& fields, int number) const;
    std::string Line(const EvaluationRecord& record) const;
    void ForgetFormer();
    std::string ResidualsPath() const;

    std::string path_;
    std::vector<std::string> titles_;
    std::size_t parameters_;
    std::size_t dataSets_;
    std::vector<EvaluationRecord> former_;  // of which `records` repeats the first
    std::vector<std::vector<double>> formerResiduals_;
};

}  // namespace qvre
