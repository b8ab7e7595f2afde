#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "pattern/SphereMap.h"

namespace qvre {

/// A stored pixel that belongs to the map. Angles in radians, phi in [0, 2 pi).
struct SpherePixel {
    std::int32_t column = 0;
    std::int32_t row = 0;
    double theta = 0.0;
    double phi = 0.0;
    double weight = 0.0;  ///< solid angle up to a factor common to all pixels of the map
    double value = 0.0;
};

/// A function on the sphere, given by the pixels of a map and interpolated between them.
///
/// theta is the polar angle from +z, the outward surface normal, phi the azimuth from +x towards +y, both in
/// radians. Between pixels the interpolation is cubic convolution (R. G. Keys, IEEE Trans. Acoust. Speech
/// Signal Process. 29, 1153 (1981), a = -1/2): continuous with its first derivative, of third order in the
/// pixel distance h. A spherical harmonic of degree l is off by about 0.016 (l h)^3 of its amplitude: 2e-6
/// for l = 3 and h = 1 degree, 1e-4 for l = 10.
class SphereImage {
public:
    /// `pixels` holds width * height values row by row, the column fastest. Throws ZfError when the shape is
    /// none of the map, a side has fewer than 17 pixels, or a pixel on the map is not finite.
    SphereImage(SphereMap map, std::int32_t width, std::int32_t height, std::vector<double> pixels);

    SphereMap Map() const { return map_; }
    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }
    double Resolution_deg() const { return 180.0 / (height_ - 1); }  ///< distance of pixels along theta
    double MaxTheta() const;                                         ///< radians: pi/2 or pi

    /// Any phi; theta in [0, MaxTheta()], NaN beyond. The cylindrical map closes over its azimuthal seam and
    /// over the poles. Within two pixels of the rim the azimuthal map is continued by the cubic through the
    /// four outermost pixels of a row or column, so pixels beyond 90 degrees never enter.
    double Value(double theta, double phi) const;

    /// The pixels of the map in the order of storage.
    std::vector<SpherePixel> Pixels() const;

    /// An image on the same map with the values f(theta, phi). f is called from several threads and must not
    /// throw.
    SphereImage Transformed(const std::function<double(double theta, double phi)>& f) const;

private:
    double DiscValue(double theta, double phi) const;
    double CylinderValue(double theta, double phi) const;
    double RowValue(std::int32_t row, double column) const;
    void ContinueBeyondRim();

    SphereMap map_;
    std::int32_t width_;
    std::int32_t height_;
    std::vector<double> pixels_;
    std::vector<double> framed_;  // azimuthal map: pixels in a frame of kFrame, continued beyond the rim
};

/// What an image file tells beside its pixels.
struct ImageInformation {
    std::map<std::string, std::vector<double>> numbers;
    std::map<std::string, std::vector<std::string>> texts;
};

/// The text of the information that tells what the pixels are, where they are no intensity.
inline constexpr const char* kQuantityKey = "__Quantity";
inline constexpr const char* kAsymmetry = "asymmetry";

/// An image as its file gives it.
struct LoadedImage {
    bool IsAsymmetry() const;

    SphereImage image;
    std::string title;  ///< text "Title" or "Comment" of the information, else the name without extension
    ImageInformation information = {};
};

/// The first image of an image file (.xml_img). The map is the one that the file names; without a name a
/// square image is azimuthal and one of width 2 (H - 1) cylindrical. Throws ZfError with the name of the
/// file.
LoadedImage LoadSphereImage(const std::string& path);

/// Throws ZfError unless the two images have the same map and size; names the differing ones.
void CheckSameGrid(const SphereImage& a, const SphereImage& b);

}  // namespace qvre
