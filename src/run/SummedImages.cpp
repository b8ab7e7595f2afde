#include "run/SummedImages.h"

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "image/PlaneImage.h"
#include "xml/ZfQBarnFile.h"

namespace qvre {

namespace {

void Load(ZfDocData& document, const std::string& path) {
    ZfQBarnFile file(path, "r");
    if (!document.SaveLoad(file)) throw ZfError(path + " is no image file");
}

ZfLDoubleMatrix FirstPlane(ZfDocData& document, const std::string& path) {
    if (document.imageSet.empty()) throw ZfError(path + " holds no image");
    ZfLDoubleMatrix plane;
    plane.Convert(document.imageSet.begin()->second);
    return plane;
}

}  // namespace

void SumImages(const std::vector<std::string>& imageFiles, const std::string& outputFile) {
    ZfDocData sum;
    Load(sum, imageFiles.at(0));
    ZfLDoubleMatrix total = FirstPlane(sum, imageFiles.at(0));
    for (std::size_t i = 1; i < imageFiles.size(); ++i) {
        ZfDocData member;
        Load(member, imageFiles[i]);
        AddInPlace(total, FirstPlane(member, imageFiles[i]));
    }
    ReplacedFile output(outputFile);
    output.Write([&](const std::string& path) { SavePlane(sum, total, path); });
    output.Commit();
}

}  // namespace qvre
