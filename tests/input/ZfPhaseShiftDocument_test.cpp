#include "input/ZfPhaseShiftDocument.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "XmlText.h"

namespace {

std::string Matrix(const std::string& tag, int colSize, int rowSize, const std::string& elements,
                   const std::string& more = "") {
    return Tag(tag, Tag("zf_matrix", Tag("ColSize", std::to_string(colSize)) +
                                         Tag("RowSize", std::to_string(rowSize)) + more +
                                         Tag("elements", elements)));
}

std::string Document(const std::string& items) {
    return Tag("PhaseShiftData", Tag("data", Tag("ListScatteringPhaseShift", items)));
}

ZfPhaseShiftDocument Read(const std::string& text) {
    ZfBarnXml xml("r");
    xml.Parse(text);
    ZfPhaseShiftDocument document;
    document.Exchange(xml);
    return document;
}

const std::string kAdditional = "<AdditionalData></AdditionalData>";

}  // namespace

TEST(ZfPhaseShiftDocument, FactorsOfKnownPhases) {
    constexpr double kRounding = 1e-15;
    const std::string head = Tag("Ek_eV", "1000") + Tag("AtomName", "Cu1") + Tag("AtomElement", "Cu");
    for (const auto& [cols, rows] : {std::pair(1, 3), std::pair(3, 1)}) {
        ZfPhaseShiftDocument document =
            Read(Document(Tag("i", head + Matrix("PhaseShiftValue", cols, rows, "0,90,-45,") + kAdditional)));
        ASSERT_EQ(document.records.size(), 1U);
        ZfPhaseShiftRecord& record = document.records[0];
        EXPECT_EQ(record.Ek_eV, 1000.0);
        EXPECT_EQ(record.AtomName, "Cu1");
        EXPECT_EQ(record.scatteringFactors.VectorAt(0), std::complex<double>(0.0, 0.0));
        EXPECT_LT(std::abs(record.scatteringFactors.VectorAt(1) + 2.0), kRounding);
        EXPECT_LT(std::abs(record.scatteringFactors.VectorAt(2) - std::complex<double>(-1, -1)), kRounding);
    }
    EXPECT_EQ(Read(Document(Tag("i", kAdditional))).records[0].scatteringFactors.VectorSize(), 0);
}

TEST(ZfPhaseShiftDocument, Faults) {
    const auto error = [](const std::string& item) {
        return ErrorText([&] { Read(Document(Tag("i", item))); });
    };
    EXPECT_EQ(error(Tag("Ek_eV", "1")), "Invalid Tag Name:i <> AdditionalData");
    EXPECT_EQ(error(Matrix("PhaseShiftValue", 2, 2, "1,2,3,4,") + kAdditional), "This is not vector");
    EXPECT_EQ(error(Matrix("PhaseShiftValue", 1, 1, "1,", Tag("RowBegin", "1")) + kAdditional),
              "Matrix over range. access=(0,0) size=(1,1) begin=(0,1)FastReturn=false");
    const std::string rows = Tag("P", Tag("LDoubleMatrix", Tag("RowSize", "2147483647")));
    EXPECT_EQ(error(Tag("AdditionalData", Tag("CalculateScattering", rows))), "no failure");
}

TEST(ZfPhaseShiftDocument, ASavedRecordLosesDp) {
    const std::string tables = Matrix("LnX", 1, 2, "-1,-2,") + Matrix("P", 2, 1, "1,2,") +
                               Matrix("DPDLnX", 2, 1, "3,4,") + Matrix("L", 1, 2, "5,6,") +
                               Matrix("DLDLnX", 2, 1, "7,8,");
    ZfPhaseShiftDocument document = Read(
        Document(Tag("i", Tag("AdditionalData", Tag("FileName", "f") + Tag("CalculateScattering", tables)))));
    using Rows = std::vector<std::vector<double>>;
    EXPECT_EQ(document.records[0].radial.DPDLnX, (Rows{{3, 4}}));
    EXPECT_EQ(document.records[0].radial.L, (Rows{{5}, {6}}));
    ZfBarnXml xml("w");
    document.Exchange(xml);
    const std::string text = xml.Document();
    EXPECT_EQ(text.find("<PhaseShiftData><data><ListScatteringPhaseShift><i><Ek_eV>0</Ek_eV>\n<AtomName>"),
              0U);
    const ZfRadialTables back = Read(text).records[0].radial;
    EXPECT_EQ(back.LnX, (std::vector<double>{-1, -2}));
    EXPECT_EQ(back.P, (Rows{{1, 2}}));
    EXPECT_EQ(back.DPDLnX, (Rows{{7, 8}}));
    EXPECT_EQ(back.DLDLnX, Rows());

    // Cut anywhere, the text reads as something or fails as a ZfError.
    for (std::size_t n = 0; n < text.size(); ++n) ErrorText([&] { Read(text.substr(0, n)); });
}
