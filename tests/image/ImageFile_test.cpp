#include <gtest/gtest.h>

#include "TempFolder.h"
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
