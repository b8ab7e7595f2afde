#include "structure/FitJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Words.h"
#include "structure/FitAlerts.h"

namespace qvre {

namespace {

QJsonValue Json(double value) {
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

QJsonValue Json(const std::optional<double>& value) {
    return value ? Json(*value) : QJsonValue(QJsonValue::Null);
}

QJsonValue Json(const std::string& text) {
    return QString::fromStdString(text);
}

template <class Element>
QJsonArray Json(const std::vector<Element>& values) {
    QJsonArray array;
    for (const Element& value : values) array.append(Json(value));
    return array;
}

template <class Element, class Member>
QJsonArray Each(const std::vector<Element>& values, const Member& member) {
    QJsonArray array;
    for (const Element& value : values) array.append(member(value));
    return array;
}

int StatusOf(const FitReport& report) {
    if (report.isRunning) return -1;
    if (IsConverged(report.stop)) return 0;
    return report.stop == FitStop::kLimit ? 1 : report.stop == FitStop::kInterrupted ? 2 : 3;
}

int GenerationsOf(const FitReport& report) {
    int most = 0;
    for (const EvaluationRecord& record : report.records) most = std::max(most, record.generation);
    return most;
}

QJsonObject RestraintJson(const FitParameter& one) {
    return {{"name", Json(one.name)},
            {"value", Json(one.restraint->value)},
            {"sigma", Json(one.restraint->sigma)}};
}

QJsonObject DataJson(const FittedData& data) {
    const SampleSetting& setting = data.compared.setting;
    return {{"name", Json(data.name)},
            {"points", static_cast<int>(data.compared.Directions())},
            {"weight", Json(data.weight)},
            {"N", Json(data.independentData)},
            {"R", Json(data.r)},
            {"R_level", Json(RLevel(data.r, data.independentData))},
            {"amplitude", Json(data.amplitude)},
            {"rotation", Json(setting.rotation)},
            {"polar_offset", Json(setting.thetaOffset)},
            {"tilt", Json(setting.tilt)},
            {"tilt_azimuth", Json(setting.tiltAzimuth)}};
}

QJsonArray DerivedJson(const FitReport& report) {
    QJsonArray array;
    const std::vector<double> values = report.space.Derived(report.best.point);
    std::vector<std::optional<double>> errors(values.size());
    if (report.noise) errors = DerivedErrors(report.space, report.best.point, *report.noise);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const DerivedQuantity& one = report.space.derived[i];
        array.append(QJsonObject{{"name", Json(one.name)},
                                 {"expression", Json(one.expression)},
                                 {"unit", Json(one.unit)},
                                 {"value", Json(values[i])},
                                 {"stderr", Json(errors[i])}});
    }
    return array;
}

QJsonArray CorrelationsJson(const NoiseErrors& noise) {
    QJsonArray rows;
    for (std::size_t i = 0; i < noise.sigma.size(); ++i) {
        QJsonArray row;
        for (std::size_t j = 0; j < noise.sigma.size(); ++j) row.append(Json(noise.Correlation(i, j)));
        rows.append(row);
    }
    return rows;
}

void InsertParameters(const ParameterSpace& space, QJsonObject& json) {
    const auto& parameters = space.parameters;
    json["x_names"] = Each(parameters, [](const FitParameter& one) { return Json(one.name); });
    json["x_units"] = Each(parameters, [](const FitParameter& one) { return Json(one.unit); });
    json["x0"] = Json(space.Start());
    json["bounds"] = Each(parameters, [](const FitParameter& one) {
        return QJsonArray{one.lower, one.upper};
    });
    QJsonArray restraints;
    for (const FitParameter& one : parameters)
        if (one.restraint) restraints.append(RestraintJson(one));
    json["restraints"] = restraints;
}

void InsertErrors(const FitReport& report, QJsonObject& json) {
    if (report.noise) {
        json["stderr"] = Json(report.noise->sigma);
        json["stderr_missing"] = Json(report.noise->reason);
        json["cov_x"] = Json(report.noise->covariance);
        json["correlations"] = CorrelationsJson(*report.noise);
        json["degrees_of_freedom"] = Json(report.noise->degreesOfFreedom);
        if (report.hasSigmas) json["chi_squared"] = Json(report.noise->chiSquared);
    }
    json["R_level_intervals"] = Each(report.levels, [](const RLevelError& one) {
        return QJsonArray{Json(one.lower), Json(one.upper)};
    });
    json["R_level_missing"] = Each(report.levels, [](const RLevelError& one) {
        return QJsonArray{Json(one.lowerReason), Json(one.upperReason)};
    });
}

void InsertBest(const FitReport& report, QJsonObject& json) {
    json["x"] = Json(report.best.point);
    json["fun"] = Json(report.best.misfit);
    json["R"] = Json(report.best.evaluation.r);
    json["R_level"] = Json(RLevel(report.best.evaluation.r, report.independentData));
    json["N"] = Json(report.independentData);
    json["derived"] = DerivedJson(report);
    json["rivals"] = Each(report.rivals, [](const Trial& rival) {
        return QJsonObject{
            {"x", Json(rival.point)}, {"fun", Json(rival.misfit)}, {"R", Json(rival.evaluation.r)}};
    });
    json["convergence"] = Each(report.convergence, [](const ConvergenceCheck& check) {
        return QJsonObject{{"what", Json(check.what)}, {"R", Json(check.r)}};
    });
    json["data"] = Each(report.data, DataJson);
    InsertErrors(report, json);
}

}  // namespace

std::string FitAsJson(const FitReport& report) {
    QJsonObject json;
    json["title"] = Json(report.title);
    json["recipe"] = Json(report.recipe);
    json["calculation"] = Json(report.calculation);
    json["search"] = Json(report.search);
    json["version"] = QVRE_VERSION;
    json["nfev"] = report.evaluations;
    json["nit"] = GenerationsOf(report);
    json["seconds"] = Json(report.seconds);
    const int status = StatusOf(report);
    json["status"] = status;
    json["success"] = status == 0;
    json["message"] = Json(report.isRunning ? "still running" : WordFor(report.stop));
    if (!report.detail.empty()) json["detail"] = Json(report.detail);
    json["alerts"] = Json(FitAlerts(report));
    InsertParameters(report.space, json);
    if (!report.best.point.empty()) InsertBest(report, json);
    return QJsonDocument(json).toJson().toStdString();
}

}  // namespace qvre
