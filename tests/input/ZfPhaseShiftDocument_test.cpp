#include "input/ZfPhaseShiftDocument.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "XmlText.h"

namespace {

std::string Matrix(const std::string& tag, int colSize, int rowSize, const std::string& elements) {
    return Tag(tag,
               Tag("zf_matrix", Tag("ColSize", std::to_string(colSize)) +
                                    Tag("RowSize", std::to_string(rowSize)) + Tag("elements", elements)));
}

std::vector<PhaseShiftRecord> Read(const std::string& text) {
    XmlReader xml(text);
    ZfPhaseShiftDocument document;
    document.Exchange(xml);
    return document.records;
}

std::string Document(const std::string& item) {
    return Tag("PhaseShiftData", Tag("data", Tag("ListScatteringPhaseShift", Tag("i", item))));
}

}  // namespace

TEST(ZfPhaseShiftDocument, FactorsOfKnownPhases) {
    const std::string additional = Tag("AdditionalData", "");
    for (const auto& [cols, rows] : {std::pair(1, 3), std::pair(3, 1)}) {
        const auto records = Read(Document(Matrix("PhaseShiftValue", cols, rows, "0,90,-45,") + additional));
        const ZfLComplexMatrix& t = records.at(0).scatteringFactors;
        EXPECT_EQ(t.VectorValueAt(0), std::complex<double>(0.0, 0.0));
        EXPECT_LT(std::abs(t.VectorValueAt(1) + 2.0), 1e-15);
        EXPECT_LT(std::abs(t.VectorValueAt(2) - std::complex<double>(-1, -1)), 1e-15);
    }
    EXPECT_EQ(ErrorText([] { Read(Document(Tag("Ek_eV", "1"))); }), "Invalid Tag Name:i <> AdditionalData");
    EXPECT_EQ(ErrorText([&] { Read(Document(Matrix("PhaseShiftValue", 2, 2, "1,2,3,4,") + additional)); }),
              "This is not vector");
    const std::string rows = Tag("P", Tag("LDoubleMatrix", Tag("RowSize", "2147483647")));
    EXPECT_EQ(Read(Document(Tag("AdditionalData", Tag("CalculateScattering", rows)))).size(), 1U);
}

TEST(ZfPhaseShiftDocument, ASavedRecordLosesDp) {
    const std::string tables = Matrix("LnX", 1, 2, "-1,-2,") + Matrix("P", 2, 1, "1,2,") +
                               Matrix("DPDLnX", 2, 1, "3,4,") + Matrix("L", 1, 2, "5,6,") +
                               Matrix("DLDLnX", 2, 1, "7,8,");
    ZfPhaseShiftDocument document;
    document.records = Read(Document(Tag("AdditionalData", Tag("CalculateScattering", tables))));
    using Rows = std::vector<std::vector<double>>;
    EXPECT_EQ(document.records[0].radial.DPDLnX, (Rows{{3, 4}}));
    EXPECT_EQ(document.records[0].radial.L, (Rows{{5}, {6}}));
    ZfBarnXml xml("w");
    document.Exchange(xml);
    const std::string text = xml.Document();
    EXPECT_TRUE(
        text.starts_with("<PhaseShiftData><data><ListScatteringPhaseShift><i><Ek_eV>0</Ek_eV>\n<AtomName>"));
    const RadialTables back = Read(text).at(0).radial;
    EXPECT_EQ(back.LnX, (std::vector<double>{-1, -2}));
    EXPECT_EQ(back.P, (Rows{{1, 2}}));
    EXPECT_EQ(back.DPDLnX, (Rows{{7, 8}}));
    EXPECT_EQ(back.DLDLnX, Rows());

    // Cut anywhere, the text reads as something or fails as a ZfError.
    for (std::size_t n = 0; n < text.size(); ++n) ErrorText([&] { Read(text.substr(0, n)); });
}
