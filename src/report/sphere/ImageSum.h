#pragma once

#include <string>
#include <vector>

#include "report/sphere/Modulation.h"
#include "report/sphere/SphereImage.h"

namespace qvre {

struct WeightedImage {
    std::string path;
    double weight = 1.0;
};

/// sum of w I, pixel by pixel: intensities of parts that do not interfere add. There are as many weights as
/// images. Throws ZfError when the grids differ.
SphereImage WeightedSum(const std::vector<SphereImage>& images, const std::vector<double>& weights);

/// (A - B)/(A + B), as of light of either hand, whose asymmetry is the dichroism: the modulation of 2 A
/// against A + B. Throws ZfError when the grids differ or A + B is positive nowhere.
ModulationFunction AsymmetryOf(const SphereImage& a, const SphereImage& b);

/// "asymmetry left out in 3.1 percent of the directions, where the images together are below 1 percent of
/// their maximum"; empty when nothing is left out.
std::string AsymmetryLeftOutText(const ModulationFunction& asymmetry);

/// Adds image files into a new one, whole or not at all. It keeps the information that all members share and
/// lists, in their order, what they do not; it tells their names and weights besides, with folders where the
/// names alone do not differ. Throws ZfError, which names the files, when they cannot be read or their grids
/// differ.
void SumImages(const std::vector<WeightedImage>& members, const std::string& output);

/// Writes the asymmetry of two image files as an image, which says that it is one; 0 where it is left out.
/// Returns AsymmetryLeftOutText. Throws ZfError as SumImages.
std::string SaveAsymmetry(const std::string& a, const std::string& b, const std::string& output);

}  // namespace qvre
