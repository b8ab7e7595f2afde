#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Samples.h"
#include "TempFolder.h"
#include "foundation/ZfError.h"
#include "image/ZfDocData.h"
#include "xml/ZfQBarnFile.h"

namespace {

// A 2 by 1 image of 1.0 and -2.0 by hand: bytes 00 00 80 3f and 00 00 00 c0, three to a group of four
// characters, low bits first; the last group is filled up with a zero byte.
constexpr const char* kSmallFile =
    "<DataOfProcessImage><version>5</version>\n"
    "<GlobalInfo><InfoValue></InfoValue>\n"
    "<InfoString><i><key>__SphereProjection.Name</key>\n"
    "<value>AzimuthalEquidistant</value>\n"
    "</i>\n"
    "</InfoString>\n"
    "</GlobalInfo>\n"
    "<ImageSet><i><Channel>0</Channel>\n"
    "<Image><ZfFloatMatrixBinary><ColSize>2</ColSize>\n"
    "<ColBegin>0</ColBegin>\n"
    "<RowSize>1</RowSize>\n"
    "<RowBegin>0</RowBegin>\n"
    "<base64>00000008AAAg/AAAAAMA</base64>\n"
    "</ZfFloatMatrixBinary>\n"
    "</Image>\n"
    "</i>\n"
    "</ImageSet>\n"
    "</DataOfProcessImage>\n";

constexpr int kVersions[] = {0, 2, 3, 4, 5, 6};

using Floats = std::vector<float>;

template <class Block>
Floats Elements(const Block& block) {
    return {block.Data(), block.Data() + block.Count()};
}

void LoadFile(ZfDocData& data, const std::string& path) {
    ZfQBarnFile file(QString::fromStdString(path), "r");
    EXPECT_TRUE(data.SaveLoad(file)) << path;
}

std::string SavedText(ZfDocData& data) {
    ZfBarnXml xml("w");
    data.SaveLoad(xml);
    return xml.Document();
}

std::string LoadMessage(const std::string& text) {
    try {
        ZfDocData data;
        LoadText(data, text);
    } catch (const ZfError& error) {
        return error.message;
    }
    return "";
}

}  // namespace

TEST(ImageFile, SavesAPatternToTheLetter) {
    ZfDocData data;
    ZfDocData::SetInfoString(data.infoString, "__SphereProjection.Name", "AzimuthalEquidistant");
    ZfFloatMatrix image(2, 1);
    image.At(0, 0) = 1.0F;
    image.At(1, 0) = -2.0F;
    data.imageSet[data.currentChannel] = image;

    const TempFolder folder;
    ZfQBarnFile file(QString::fromStdString(folder.Path("a.xml_img")), "w");
    EXPECT_TRUE(data.SaveLoad(file));
    file.Save();
    EXPECT_EQ(folder.Read("a.xml_img"), kSmallFile);
}

// All samples hold the same image, stored as doubles, as text and in each binary form.
TEST(ImageFile, LoadsTheImageOfEveryVersion) {
    for (const int version : kVersions) {
        ZfDocData data;
        LoadFile(data, SamplePath(version));
        const float channel = version < 5 ? 0.0F : 2.5F;
        EXPECT_EQ(data.imageSet.size(), version < 5 ? 1U : 2U) << version;
        ASSERT_EQ(data.imageSet.count(channel), 1U) << version;
        const ZfFloatMatrix& image = data.imageSet[channel];
        EXPECT_EQ(Elements(image), (Floats{0.0F, 1.0F, -2.5F, 0.1F, 1e-30F, 65536.0F})) << version;
        EXPECT_EQ(image.ColSize, 3) << version;
        EXPECT_EQ(image.ColBegin, -1) << version;
        EXPECT_EQ(image.RowBegin, 3) << version;
        EXPECT_EQ(data.version, 5) << "a load leaves what a save writes";
    }
}

TEST(ImageFile, LoadsTablesAndSetsOfTheLaterVersions) {
    for (const int version : {4, 5, 6}) {
        ZfDocData data;
        LoadFile(data, SamplePath(version));
        // A key without items, or items without a key, are dropped.
        EXPECT_EQ(data.infoValue, (ZfDocData::InfoValue{{"Energy", {800.5, -1.0}}})) << version;
        EXPECT_EQ(
            data.infoString,
            (ZfDocData::InfoString{{"__SphereProjection.Name", {"EquidistantCylindrical", "\"second\""}}}));
        if (version == 4) continue;
        EXPECT_EQ(Elements(data.imageSet[-1.0F]), (Floats{0.5F, -1.5F, 2.0F, 7.0F})) << version;
        ASSERT_EQ(data.waveSet.size(), 1U) << version;
        EXPECT_EQ(Elements(data.waveSet[7.0F]), (Floats{0.5F, -1.5F, 2.0F, 7.0F})) << version;
        ASSERT_EQ(data.voxelSet.size(), 1U) << version;
        const ZfFloatMatrix3D& voxel = data.voxelSet[0.0F];
        EXPECT_EQ(Elements(voxel), (Floats{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})) << version;
        EXPECT_EQ(voxel.ColBegin, -1) << version;
        EXPECT_EQ(voxel.DepthSize, 2) << version;
        EXPECT_EQ(voxel.DepthBegin, 5) << version;
    }
}

// Floats that 6 or 9 digits would not bring back, through the file and its lines.
TEST(ImageFile, ReadsBackTheSameFloats) {
    using Limits = std::numeric_limits<float>;
    const Floats values = {1.0F / 3.0F,          0.1F,          -0.0F,          16777217.0F,
                           Limits::denorm_min(), Limits::max(), -Limits::min(), 1e-7F};
    ZfDocData saved;
    saved.imageSet[0.0F].SetSize(4, 2);
    std::copy(values.begin(), values.end(), saved.imageSet[0.0F].Data());
    saved.imageSet[-12.5F] = saved.imageSet[0.0F];
    saved.waveSet[3.0F].SetSize(1, 0);  // no element at all
    saved.voxelSet[1.0F].Allocate(2, 1, 2);
    std::copy_n(values.begin(), 4, saved.voxelSet[1.0F].Data());
    ZfDocData::SetInfoValue(saved.infoValue, "a<b & \"c\"", -0.125);

    const TempFolder folder;
    {
        ZfQBarnFile file(QString::fromStdString(folder.Path("a.xml_img")), "w");
        saved.SaveLoad(file);
    }
    ZfDocData loaded;
    LoadFile(loaded, folder.Path("a.xml_img"));
    EXPECT_EQ(Elements(loaded.imageSet[0.0F]), values);
    EXPECT_TRUE(std::signbit(loaded.imageSet[0.0F].At(2, 0)));
    EXPECT_EQ(Elements(loaded.imageSet[-12.5F]), values);
    EXPECT_EQ(loaded.waveSet.at(3.0F).Count(), 0);
    EXPECT_EQ(Elements(loaded.voxelSet[1.0F]), Floats(values.begin(), values.begin() + 4));
    EXPECT_EQ(loaded.infoValue, saved.infoValue);
}

TEST(ImageFile, SavesWhatOldFilesHeldAsVersion5) {
    for (const int version : kVersions) {
        ZfDocData old;
        LoadText(old, SampleText(version));
        const std::string text = SavedText(old);
        EXPECT_EQ(text.find("<DataOfProcessImage><version>5</version>\n<GlobalInfo>"), 0U) << version;
        EXPECT_EQ(text.find("Informations"), std::string::npos) << version;
        ZfDocData again;
        LoadText(again, text);
        EXPECT_EQ(SavedText(again), text) << version;
    }
}

TEST(ImageFile, ReplacesWhatADocumentHeld) {
    ZfDocData data;
    LoadText(data, SampleText(5));
    LoadText(data, "<DataOfProcessImage><version>5</version><GlobalInfo></GlobalInfo></DataOfProcessImage>");
    EXPECT_TRUE(data.imageSet.empty() && data.waveSet.empty() && data.voxelSet.empty());
    EXPECT_TRUE(data.infoValue.empty() && data.infoString.empty());

    LoadText(data, SampleText(5));
    LoadText(data, SampleText(4));
    EXPECT_EQ(data.imageSet.size(), 1U);
}

TEST(ImageFile, RefusesWhatIsNoImageFileOfAKnownVersion) {
    ZfDocData data;
    for (const char* text :
         {"", "<Other></Other>", "<DataOfProcessImage><version>1</version></DataOfProcessImage>",
          "<DataOfProcessImage><version>7</version></DataOfProcessImage>",
          "<DataOfProcessImage><version>-1</version></DataOfProcessImage>"})
        EXPECT_FALSE(LoadText(data, text)) << text;
    EXPECT_EQ(data.imageSet[0.0F].ColSize, 16) << "a refused file changes nothing";
}

// The name of the information block changed between versions; one is not taken for the other.
TEST(ImageFile, WantsTheInformationBlockOfItsVersion) {
    const auto file = [](int version, const std::string& block) {
        return "<DataOfProcessImage><version>" + std::to_string(version) + "</version><" + block + "></" +
               block + "></DataOfProcessImage>";
    };
    const std::string text = "Invalid Tag Name:DataOfProcessImage <> ";
    EXPECT_EQ(LoadMessage(file(0, "GlobalInfo")), text + "Informations");
    EXPECT_EQ(LoadMessage(file(3, "GlobalInfo")), text + "Informations");
    EXPECT_EQ(LoadMessage(file(4, "GlobalInfo")), text + "GrobalInfo");
    EXPECT_EQ(LoadMessage(file(5, "GrobalInfo")), text + "GlobalInfo");
    EXPECT_EQ(LoadMessage(file(6, "GrobalInfo")), text + "GlobalInfo");
    EXPECT_EQ(LoadMessage(file(2, "GlobalInfo")), "Over CloseRack");  // it has closed the root in its place
}

TEST(ImageFile, ShortVoxelsBecomeOneZero) {
    std::string text = SampleText(5);
    text.replace(text.find("<DepthSize>2"), 12, "<DepthSize>3");
    ZfDocData data;
    EXPECT_TRUE(LoadText(data, text));
    EXPECT_EQ(Elements(data.voxelSet.at(0.0F)), Floats{0.0F});
    EXPECT_EQ(data.voxelSet.at(0.0F).DepthBegin, 0);
}

// A file cut short is either refused by a ZfError or leaves a document that can be saved.
TEST(ImageFile, TakesFilesCutAnywhere) {
    for (const int version : kVersions) {
        const std::string text = SampleText(version);
        for (std::size_t length = 0; length < text.size(); ++length) {
            SCOPED_TRACE("version " + std::to_string(version) + " cut at " + std::to_string(length));
            ZfDocData data;
            try {
                LoadText(data, text.substr(0, length));
            } catch (const ZfError& error) {
                EXPECT_FALSE(error.message.empty());
            }
            EXPECT_NE(SavedText(data).find("</DataOfProcessImage>\n"), std::string::npos);
        }
    }
}
