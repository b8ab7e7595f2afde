#include "structure/FitFiles.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "LinearFit.h"
#include "TempFolder.h"
#include "foundation/CommaTable.h"
#include "structure/FitJson.h"
#include "structure/FitOutput.h"

namespace {

QJsonObject Parsed(const FitReport& report) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(FitAsJson(report))).object();
}

}  // namespace

TEST(FitFiles, NamesOfDataSetsBecomeNamesOfFiles) {
    std::vector<FittedData> data;
    for (const char* name : {"polar 0°", "Map/1", "map_1", "../x", "map_1_2", "map_1"}) {
        data.emplace_back();
        data.back().name = name;
    }
    EXPECT_EQ(fit_files::PartsOfNames(data),
              (std::vector<std::string>{"polar_0__", "Map_1", "map_1_2", ".._x", "map_1_2_2", "map_1_3"}));
}

TEST(FitJson, HasWhatScipyTells) {
    const FitReport report = LinearFit().Report();
    const QJsonObject json = Parsed(report);
    EXPECT_EQ(json["x"].toArray()[1].toDouble(), report.best.point[1]);
    EXPECT_EQ(json["x_names"].toArray(), (QJsonArray{"d12", "d23"}));
    EXPECT_EQ(json["bounds"].toArray()[0].toArray(), (QJsonArray{1.2, 2.2}));
    EXPECT_EQ(json["fun"].toDouble(), report.best.misfit);
    EXPECT_TRUE(json["success"].toBool());
    EXPECT_EQ(json["status"].toInt(-5), 0);
    // Of the closed form; the restraint is weak.
    EXPECT_NEAR(json["stderr"].toArray()[0].toDouble(), LinearFit::kSigma12, 0.01 * LinearFit::kSigma12);
    EXPECT_NEAR(json["cov_x"].toArray()[0].toArray()[1].toDouble(),
                0.5 * LinearFit::kSigma12 * LinearFit::kSigma23, 2e-6);
    EXPECT_NEAR(json["correlations"].toArray()[1].toArray()[0].toDouble(), 0.5, 0.01);
    EXPECT_NEAR(json["R_level"].toDouble(), 1.1 * json["R"].toDouble(), 1e-12);
    const QJsonArray interval = json["R_level_intervals"].toArray()[0].toArray();
    EXPECT_NEAR(interval[1].toDouble() - interval[0].toDouble(), 2.0 * std::sqrt(10.0) * LinearFit::kSigma12,
                1e-3);
    EXPECT_NEAR(json["derived"].toArray()[0].toObject()["value"].toDouble(), 1.772 + 2.041, 1e-4);
}

TEST(FitJson, WhatDoesNotExistIsNull) {
    FitReport report = LinearFit(0.5, 1.8).Report();
    report.best.misfit = std::numeric_limits<double>::infinity();
    report.stop = FitStop::kInterrupted;
    const QJsonObject json = Parsed(report);
    ASSERT_FALSE(json.isEmpty());
    EXPECT_TRUE(json["fun"].isNull());
    EXPECT_TRUE(json["stderr"].toArray()[0].isNull());
    EXPECT_TRUE(json["R_level_intervals"].toArray()[0].toArray()[0].isNull());
    EXPECT_TRUE(json["derived"].toArray()[0].toObject()["stderr"].isNull());
    EXPECT_FALSE(json["success"].toBool(true));
    EXPECT_EQ(json["status"].toInt(), 2);
}

TEST(FitOutput, TablesHoldWhatWasFitted) {
    const TempFolder folder;
    FitReport report = LinearFit().Report();
    FittedData data{.name = "polar scan", .compared = {}, .amplitude = 2.0};
    for (int i = 0; i < 20; ++i) {
        data.compared.theta.push_back(2.0 * i);
        data.compared.phi.push_back(45.0);
        data.compared.weight.push_back(1.0);
        data.compared.chiA.push_back(0.1 * std::cos(i) + 0.01);
        data.compared.chiB.push_back(0.05 * std::cos(i));
    }
    report.data = {data};
    WriteFitReport(report, folder.Path("."));

    const CommaTable comparison = CommaTable::Load(folder.Path("comparison_polar_scan.csv"));
    ASSERT_EQ(comparison.rows.size(), 20U);
    for (const auto& row : comparison.rows) {
        EXPECT_NEAR(
            std::stod(row[comparison.Column("measured")]) - std::stod(row[comparison.Column("calculated")]),
            0.01, 1e-9);
        EXPECT_NEAR(std::stod(row[comparison.Column("residual")]), 0.01, 1e-9);
    }
    // A parabola around the minimum, the other spacing optimised along the way.
    const CommaTable profiles = CommaTable::Load(folder.Path("profiles.csv"));
    std::size_t points = 0;
    for (const auto& row : profiles.rows) {
        if (row[profiles.Column("parameter")] != "d12") continue;
        ++points;
        EXPECT_EQ(row[profiles.Column("d12")], row[profiles.Column("value")]);
        const double u = (std::stod(row[profiles.Column("value")]) - 1.772) / LinearFit::kSigma12;
        EXPECT_NEAR(std::stod(row[profiles.Column("R")]), 0.1 + 0.001 * u * u, 1e-4);
    }
    EXPECT_EQ(points, report.levels[0].profile.size());
}
