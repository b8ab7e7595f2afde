#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <tuple>

#include "ErrorText.h"
#include "Samples.h"
#include "TempFolder.h"
#include "foundation/ZfFloatMatrix3D.h"
#include "image/OldImageVersions.h"
#include "xml/ZfQBarnFile.h"

namespace {

using Floats = std::vector<float>;

template <class Block>
Floats Elements(const Block& block) {
    return {block.Data(), block.Data() + block.Count()};
}

void LoadFile(ZfDocData& data, const std::string& path) {
    ZfQBarnFile file(path, "r");
    EXPECT_TRUE(data.SaveLoad(file)) << path;
}

std::string SavedText(ZfDocData& data) {
    ZfBarnXml xml("w");
    data.SaveLoad(xml);
    return xml.Document();
}

}  // namespace

// All samples hold the same image, stored as doubles, as text and in each binary form. What a save makes of a
// sample stands beside it. Of the survey in version 2, a get takes the number of the reply, a put that of the
// command; a command of another kind repeats the number before it, and a value without a number counts as 0.
TEST(ImageFile, LoadsEveryVersionAndSavesVersion5) {
    for (const int version : kSampleVersions) {
        SCOPED_TRACE(version);
        ZfDocData data;
        LoadFile(data, SamplePath(version));
        const ZfFloatMatrix& image = data.imageSet.at(version < 5 ? 0.0F : 2.5F);
        EXPECT_EQ(Elements(image), (Floats{0.0F, 1.0F, -2.5F, 0.1F, 1e-30F, 65536.0F}));
        const std::string text = SavedText(data);
        EXPECT_EQ(text, SampleText(version, "_saved"));
        ZfDocData again;
        LoadText(again, text);
        EXPECT_EQ(SavedText(again), text);
        if (version < 5) continue;
        EXPECT_EQ(Elements(data.imageSet.at(-1.0F)), (Floats{0.5F, -1.5F, 2.0F, 7.0F}));
        EXPECT_EQ(Elements(data.waveSet.at(7.0F)), (Floats{0.5F, -1.5F, 2.0F, 7.0F}));
        EXPECT_EQ(Elements(data.voxelSet.at(0.0F)), (Floats{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    }
}

// Floats that 6 or 9 digits would not bring back.
TEST(ImageFile, ReadsBackTheSameFloats) {
    using Limits = std::numeric_limits<float>;
    ZfDocData saved;
    ZfFloatMatrix& image = saved.imageSet[-12.5F];
    image.SetVectorSize(4);
    std::ranges::copy(Floats{1.0F / 3.0F, Limits::denorm_min(), Limits::max(), -Limits::min()}, image.Data());
    saved.waveSet[3.0F].SetSize(1, 0);  // no element at all
    ZfDocData::SetInfoValue(saved.infoValue, "a<b & \"c\"", -0.125);
    const TempFolder folder;
    {
        ZfQBarnFile file(folder.Path("a.xml_img"), "w");
        saved.SaveLoad(file);
    }
    ZfDocData loaded;
    LoadFile(loaded, folder.Path("a.xml_img"));
    EXPECT_EQ(Elements(loaded.imageSet.at(-12.5F)), Elements(image));
    EXPECT_EQ(loaded.waveSet.at(3.0F).Count(), 0);
    EXPECT_EQ(loaded.infoValue, saved.infoValue);
}

TEST(ImageFile, ReplacesWhatADocumentHeld) {
    ZfDocData data;
    LoadText(data, SampleText(5));
    LoadText(data, Tag("DataOfProcessImage", Tag("version", "5") + Tag("GlobalInfo", "")));
    EXPECT_TRUE(data.imageSet.empty() && data.waveSet.empty() && data.voxelSet.empty());
    EXPECT_TRUE(data.infoValue.empty() && data.infoString.empty());
}

// The name of the information block changed between versions; one is not taken for the other.
TEST(ImageFile, RefusesWhatIsNoImageFileOfAKnownVersion) {
    ZfDocData data;
    EXPECT_FALSE(LoadText(data, "<Other></Other>"));
    for (const char* version : {"1", "7", "-1"})
        EXPECT_FALSE(LoadText(data, Tag("DataOfProcessImage", Tag("version", version)))) << version;
    EXPECT_EQ(data.imageSet[0.0F].ColSize, 16) << "a refused file changes nothing";
    const std::tuple<const char*, const char*, const char*> blocks[] = {{"0", "GlobalInfo", "Informations"},
                                                                        {"3", "GlobalInfo", "Informations"},
                                                                        {"4", "GlobalInfo", "GrobalInfo"},
                                                                        {"5", "GrobalInfo", "GlobalInfo"},
                                                                        {"6", "GrobalInfo", "GlobalInfo"}};
    for (const auto& [version, block, wanted] : blocks) {
        const std::string text = Tag("DataOfProcessImage", Tag("version", version) + Tag(block, ""));
        EXPECT_EQ(ErrorText([&] { LoadText(data, text); }),
                  std::string("Invalid Tag Name:DataOfProcessImage <> ") + wanted);
    }
}

// A file cut short is either refused by a ZfError or leaves a document that can be saved.
TEST(ImageFile, TakesFilesCutAnywhere) {
    for (const int version : kSampleVersions) {
        const std::string text = SampleText(version);
        for (std::size_t length = 0; length < text.size(); ++length) {
            ZfDocData data;
            ErrorText([&] { LoadText(data, text.substr(0, length)); });
            EXPECT_TRUE(SavedText(data).ends_with("</DataOfProcessImage>\n")) << version << ", " << length;
        }
    }
    std::string text = SampleText(5);  // a voxel block that is too short becomes one zero
    text.replace(text.find("<DepthSize>2"), 12, "<DepthSize>3");
    ZfDocData data;
    LoadText(data, text);
    EXPECT_EQ(Elements(data.voxelSet.at(0.0F)), Floats{0.0F});
}

TEST(OldImageVersions, TakeAnyCorrectionTypeButWriteNothing) {
    for (const char* type : {"1e300", "-1.5", "3", "x"}) {
        ZfDocData data;
        const std::string correction = Tag("I0", Tag("I0CorrectionType", type));
        LoadText(data, Tag("DataOfProcessImage", Tag("version", "3") + Tag("Informations", correction)));
        EXPECT_EQ(data.infoValue.size(), 4U) << type;
        EXPECT_EQ(data.infoString.count("I0Cmd#0"), 0U) << type;
        ZfBarnXml xml("w");
        EXPECT_EQ(ErrorText([&] { LoadVersion3(xml, data); }), "Prvious format data cannot save");
    }
}
