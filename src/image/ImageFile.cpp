#include <string_view>
#include <utility>

#include "image/OldImageVersions.h"
#include "image/ZfDocData.h"
#include "xml/ZfBarnXml.h"

using namespace qvre;

// The image file in its present form, version 5, and its neighbours: version 4 with one image, and version 6,
// which differs in the binary form of its matrices alone. A matrix tells its form by its tag, so one routine
// serves both; voxel blocks have one form in all versions.

namespace {

constexpr std::int32_t kWrittenVersion = 5;
constexpr std::string_view kMatrixFormat = "b";

/// A table as one child "i" a key; `exchangeItem` exchanges one item of the key's list. A key that is empty
/// or has no items is not taken from a file.
template <class Item, class ExchangeItem>
void ExchangeTable(ZfBarnXml& xml, std::string_view tag, std::map<std::string, std::vector<Item>>& table,
                   ExchangeItem exchangeItem) {
    if (xml.IsWriting()) {
        xml.OpenRack(tag);
        for (auto& [key, list] : table) {
            std::string keyText = key;
            xml.OpenRack("i");
            xml.Text("key", keyText, "");
            for (Item& item : list) exchangeItem(item);
            xml.CloseRack();
        }
        xml.CloseRack();
        return;
    }
    table.clear();
    if (!xml.OpenRack(tag)) return;
    while (xml.OpenRack("i")) {
        std::string key;
        std::vector<Item> list;
        Item item{};
        xml.Text("key", key, "");
        while (exchangeItem(item)) list.push_back(item);
        xml.CloseRack();
        if (!key.empty() && !list.empty()) table.emplace(std::move(key), std::move(list));
    }
    xml.CloseRack();
}

/// A set as one child "i" an entry. An empty set is not written; of two entries with one key the first
/// counts.
template <class Block, class ExchangeBlock>
void ExchangeSet(ZfBarnXml& xml, std::string_view tag, std::string_view keyTag, std::map<float, Block>& set,
                 ExchangeBlock exchangeBlock) {
    if (xml.IsWriting()) {
        if (set.empty()) return;
        xml.OpenRack(tag);
        for (auto& [key, block] : set) {
            float keyNumber = key;
            xml.OpenRack("i");
            xml.Float(keyTag, keyNumber, 0.0F);
            exchangeBlock(block);
            xml.CloseRack();
        }
        xml.CloseRack();
        return;
    }
    set.clear();
    if (!xml.OpenRack(tag)) return;
    while (xml.OpenRack("i")) {
        float key = 0.0F;
        Block block;
        xml.Float(keyTag, key, 0.0F);
        exchangeBlock(block);
        xml.CloseRack();
        set.emplace(key, std::move(block));
    }
    xml.CloseRack();
}

/// The block of information, named otherwise in version 4. A file without it is refused at the close.
void ExchangeInfo(ZfBarnXml& xml, std::string_view tag, ZfDocData& data) {
    xml.OpenRack(tag);
    ExchangeTable(xml, "InfoValue", data.infoValue,
                  [&xml](double& value) { return xml.Double("val", value, 0.0); });
    ExchangeTable(xml, "InfoString", data.infoString,
                  [&xml](std::string& text) { return xml.Text("value", text, ""); });
    xml.CloseRack(tag);
}

void ExchangeVersion5(ZfBarnXml& xml, ZfDocData& data) {
    ExchangeInfo(xml, "GlobalInfo", data);
    ExchangeSet(xml, "ImageSet", "Channel", data.imageSet,
                [&xml](ZfFloatMatrix& image) { xml.Matrix("Image", image, kMatrixFormat); });
    ExchangeSet(xml, "WaveSet", "tag", data.waveSet,
                [&xml](ZfFloatMatrix& wave) { xml.Matrix("Wave", wave, kMatrixFormat); });
    ExchangeSet(xml, "VoxelSet", "Channel", data.voxelSet, [&xml](ZfFloatMatrix3D& voxel) {
        if (!xml.OpenRack("Voxel")) return;
        if (xml.OpenRack("ZfFloatMatrix3DBinary")) {
            xml.Matrix3D(voxel, kMatrixFormat);
            xml.CloseRack();
        }
        xml.CloseRack();
    });
}

void LoadVersion4(ZfBarnXml& xml, ZfDocData& data) {
    ExchangeInfo(xml, "GrobalInfo", data);
    ZfFloatMatrix& image = data.OnlyImage();
    if (!xml.OpenRack("ImageSet")) return;
    if (xml.OpenRack("i")) {
        xml.Matrix("Image", image, kMatrixFormat);
        xml.CloseRack();
    }
    xml.CloseRack();
}

/// False for a version that has no reader.
bool Load(ZfBarnXml& xml, std::int32_t version, ZfDocData& data) {
    switch (version) {
        case 0:
            LoadVersion0(xml, data);
            return true;
        case 2:
            LoadVersion2(xml, data);
            return true;
        case 3:
            LoadVersion3(xml, data);
            return true;
        case 4:
            LoadVersion4(xml, data);
            return true;
        case 5:
        case 6:
            ExchangeVersion5(xml, data);
            return true;
        default:
            return false;
    }
}

}  // namespace

bool ZfDocData::SaveLoad(ZfBarnXml& xml) {
    if (!xml.OpenRack(TypeName())) return false;
    if (xml.IsWriting()) {
        version = kWrittenVersion;
        xml.Int32("version", version, 0);
        ExchangeVersion5(xml, *this);
    } else {
        std::int32_t storedVersion = 0;
        xml.Int32("version", storedVersion, 0);
        if (!Load(xml, storedVersion, *this)) return false;
    }
    xml.CloseRack();
    return true;
}
