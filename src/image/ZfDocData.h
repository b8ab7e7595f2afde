#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "foundation/Matrices.h"
#include "foundation/ZfFloatMatrix3D.h"

class ZfBarnXml;

/// The document of an image file (.xml_img): images, waves and voxel blocks, each under a number of its own,
/// and two tables of free information. Elements are 32-bit floats without a unit of their own.
///
/// A save writes version 5. A load takes versions 0 and 2 to 6; docs/image-files.md shows them all. Versions
/// before 5 hold one image, which takes the place of all others. Failures are ZfError.
class ZfDocData {
public:
    using InfoValue = std::map<std::string, std::vector<double>>;
    using InfoString = std::map<std::string, std::vector<std::string>>;

    /// Holds one image of 16 by 16 zeros, at channel 0.
    ZfDocData();
    ZfDocData(const ZfDocData&) = delete;
    ZfDocData& operator=(const ZfDocData&) = delete;

    /// Version of an image file as its first four lines tell, without parsing it, so that large files cost
    /// nothing: -1 for another kind of file, 0 also for a version that is not found. A version on the very
    /// first line does not count: the root tag stands before it, on a line of its own. Throws if the file
    /// cannot be opened.
    virtual std::int32_t CheckType(const std::string& fileName) const;

    virtual ~ZfDocData() = default;

    static const char* TypeName() { return "DataOfProcessImage"; }  ///< root element of an image file

    /// Exchanges the whole document. False if the root element is missing, or, with the root left open, the
    /// version is none that can be read.
    bool SaveLoad(ZfBarnXml& xml);

    /// Sets the first entry of the key's list; the rest of a list stays.
    static void SetInfoString(InfoString& table, const std::string& key, const std::string& text);
    static void SetInfoValue(InfoValue& table, const std::string& key, double number);

    /// The image at channel 0, after all others are dropped.
    ZfFloatMatrix& OnlyImage();

    std::int32_t id;  ///< of the object within the run, from 1
    std::string name;
    std::string path;
    std::int32_t version = 5;                   ///< written by a save; a load leaves it
    std::map<float, ZfFloatMatrix> waveSet;     ///< by `tag`
    std::map<float, ZfFloatMatrix> imageSet;    ///< by `Channel`
    float currentChannel = 0.0F;                ///< key of the image that a caller works on
    std::map<float, ZfFloatMatrix3D> voxelSet;  ///< by `Channel`
    InfoValue infoValue;
    InfoString infoString;
};
