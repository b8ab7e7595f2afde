#include <gtest/gtest.h>

#include "Sources.h"
#include "TempFolder.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnFile.h"

namespace {

ZfScatteringRecord RecordOf(const ZfVectorFreeElectron& list, const std::vector<std::string>& labels) {
    ZfScatteringRecord record;
    record.ListScatterer = list;
    record.NextListScatterer = list;
    record.atomLabels = labels;
    return record;
}

void Save(ZfScatteringData& data, const std::string& path) {
    ZfBarnFile file(path, "w");
    EXPECT_TRUE(data.Exchange(file));
    file.Save();
}

std::string ListText(const std::string& tag) {
    return "<" + tag +
           "><Ek_eV>560</Ek_eV>\n<atom_list><i><x>0</x>\n<y>0</y>\n<z>1.23457e-10</z>\n<a>Cu&lt;</a>\n"
           "<an>29</an>\n<Uiso>5e-23</Uiso>\n<c><Size_l>1</Size_l>\n"
           "<base64>00000010AAAAAAAAw/DAAAAAAAAAAAAA</base64>\n</c>\n<IsPlaneWave>false</IsPlaneWave>\n</i>\n"
           "</atom_list>\n</" +
           tag + ">\n";
}

}  // namespace

TEST(ScatteringFile, HasThisForm) {
    ZfVectorFreeElectron list = ListOf({SWave(0, 0, 1.234567e-10)});
    list.electrons[0].atomicNumber = 29;
    list.electrons[0].Uiso = 5e-23;
    ZfScatteringData data;
    data.Version = kMulti;
    data.StIndex = 1;
    data.ListScatteringData = {RecordOf(list, {"Cu<"})};
    TempFolder folder;
    Save(data, folder.Path("w.xml_sf"));
    EXPECT_EQ(folder.Read("w.xml_sf"),
              "<QVRE_ScatteringData><data><Version>2</Version>\n<EPS>0.01</EPS>\n"
              "<MultiScattering>0</MultiScattering>\n<StIndex>1</StIndex>\n<EWIndex>0</EWIndex>\n"
              "<AtIndex>0</AtIndex>\n<MuIndex>0</MuIndex>\n<ListScatteringData><i><StIndex>0</StIndex>\n"
              "<EWIndex>0</EWIndex>\n<Ratio>0</Ratio>\n" +
                  ListText("ListScatterer") + ListText("NextListScatterer") +
                  "</i>\n</ListScatteringData>\n</data>\n</QVRE_ScatteringData>\n");
}

TEST(ScatteringFile, KeepsAllBitsOfTheWavesAndSixDigitsOfThePositions) {
    ZfVectorFreeElectron waves = ListOf({FullSource(3, 0, 0, 0), FullSource(2, 1.23456789e-10, 0, -3e-10)});
    waves.SetMeanFreePath_m(5e-10);
    waves.electrons[1].B.SetSize(2);
    ZfFreeElectron plane = SourceOf(1, 0, 0, 0);
    plane.SetPlaneWave(Vector3(1, 0, 1), 1.0);
    ZfScatteringData data;
    data.ListScatteringData = {RecordOf(waves, {"a", "b"}), RecordOf(ListOf({plane}), {"p"})};
    TempFolder folder;
    Save(data, folder.Path("w.xml_sf"));
    ZfScatteringData read;
    ZfLoadScatteredWave(read, folder.Path("w.xml_sf"));

    ASSERT_EQ(read.ListScatteringData.size(), 2U);
    const ZfScatteringRecord& first = read.ListScatteringData[0];
    EXPECT_EQ(first.atomLabels, (std::vector<std::string>{"a", "b"}));
    for (const ZfVectorFreeElectron* list : {&first.ListScatterer, &first.NextListScatterer}) {
        EXPECT_EQ(list->meanFreePath, 0.0);
        const ZfFreeElectron& b = list->electrons.at(1);
        EXPECT_EQ(b.k, plane.k);
        EXPECT_EQ(b.A.block, waves.electrons[1].A.block);
        EXPECT_EQ(b.B.L, 0);
        EXPECT_EQ(b.position.VectorValueAt(0), 1.23457e-10);
    }
    const ZfFreeElectron& readPlane = read.ListScatteringData[1].ListScatterer.electrons.at(0);
    EXPECT_TRUE(readPlane.IsPlaneWave);
    EXPECT_NEAR(readPlane.planeWaveVector.VectorValueAt(2) / (plane.k / std::sqrt(2.0)), 1.0, 1e-5);
}
