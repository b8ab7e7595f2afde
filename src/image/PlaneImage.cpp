#include "image/PlaneImage.h"

#include <utility>

#include "xml/ZfQBarnFile.h"

namespace qvre {

void SavePlane(ZfDocData& image, const ZfLDoubleMatrix& plane, const std::string& fileName) {
    ZfQBarnFile file(fileName, "w");
    ZfFloatMatrix pixels;
    pixels.Convert(plane);
    image.imageSet[image.currentChannel] = std::move(pixels);
    image.SaveLoad(file);
    file.Save();
}

}  // namespace qvre
