#include "report/sphere/ImageSum.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <set>
#include <utility>

#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "image/PlaneImage.h"

namespace qvre {

namespace {

/// Entries of the tables of information that all members share, and lists of those that they do not. Titles
/// of some would pass for that of the whole.
template <class Value>
using Table = std::map<std::string, std::vector<Value>>;

template <class Value>
Table<Value> Merged(const std::vector<LoadedImage>& members, Table<Value> ImageInformation::*table) {
    Table<Value> merged;
    for (const LoadedImage& member : members) {
        for (const auto& [key, values] : member.information.*table) {
            const auto isSame = [&, &name = key, &list = values](const LoadedImage& other) {
                const auto found = (other.information.*table).find(name);
                return found != (other.information.*table).end() && found->second == list;
            };
            if (std::all_of(members.begin(), members.end(), isSame))
                merged[key] = values;
            else if (key != "Title" && key != "Comment")
                merged[key].insert(merged[key].end(), values.begin(), values.end());
        }
    }
    return merged;
}

std::vector<LoadedImage> LoadOnOneGrid(const std::vector<WeightedImage>& members) {
    std::vector<LoadedImage> images;
    for (const WeightedImage& member : members) {
        images.push_back(LoadSphereImage(member.path));
        if (images.back().IsAsymmetry())
            throw ZfError(
                member.path +
                ": it is an asymmetry, which does not add: add the intensities, and take it of them");
        Naming(members.front().path + " and " + member.path,
               [&] { CheckSameGrid(images.front().image, images.back().image); });
    }
    return images;
}

ImageInformation InformationOf(const std::vector<WeightedImage>& members,
                               const std::vector<LoadedImage>& images) {
    ImageInformation information{Merged(images, &ImageInformation::numbers),
                                 Merged(images, &ImageInformation::texts)};
    information.texts.erase("sum.of");
    information.numbers.erase("sum.weights");
    std::vector<std::string>& names = information.texts["sum.of"];
    for (const WeightedImage& member : members) {
        names.push_back(std::filesystem::path(member.path).filename().string());
        information.numbers["sum.weights"].push_back(member.weight);
    }
    if (std::set<std::string>(names.begin(), names.end()).size() < names.size())
        std::transform(members.begin(), members.end(), names.begin(),
                       [](const WeightedImage& member) { return member.path; });
    return information;
}

void Save(const std::vector<SpherePixel>& pixels, const SphereImage& grid, ImageInformation information,
          const std::string& output) {
    ZfLDoubleMatrix plane(grid.Width(), grid.Height());
    plane.Clear();
    for (const SpherePixel& p : pixels) {
        if (std::abs(p.value) > std::numeric_limits<float>::max())
            throw ZfError(
                "The values are too large for the 32-bit numbers of an image: take smaller weights");
        plane.At(p.column, p.row) = std::isnan(p.value) ? 0.0 : p.value;
    }
    ZfDocData document;
    document.infoValue = std::move(information.numbers);
    document.infoString = std::move(information.texts);
    ZfDocData::SetInfoString(document.infoString, "__SphereProjection.Name", ProjectionOf(grid.Map()).Name());
    ReplacedFile file(output);
    file.Write([&](const std::string& path) { SavePlane(document, plane, path); });
    file.Commit();
}

}  // namespace

SphereImage WeightedSum(const std::vector<SphereImage>& images, const std::vector<double>& weights) {
    const SphereImage& first = images.front();
    std::vector<double> sum(static_cast<std::size_t>(first.Width()) *
                            static_cast<std::size_t>(first.Height()));
    for (std::size_t i = 0; i < images.size(); ++i) {
        CheckSameGrid(first, images[i]);
        for (const SpherePixel& p : images[i].Pixels())
            sum[static_cast<std::size_t>(p.row) * static_cast<std::size_t>(first.Width()) +
                static_cast<std::size_t>(p.column)] += weights[i] * p.value;
    }
    return {first.Map(), first.Width(), first.Height(), std::move(sum)};
}

ModulationFunction AsymmetryOf(const SphereImage& a, const SphereImage& b) {
    return {WeightedSum({a}, {2.0}), WeightedSum({a, b}, {1.0, 1.0})};
}

std::string AsymmetryLeftOutText(const ModulationFunction& asymmetry) {
    const double part = asymmetry.LeftOut();
    if (!(part > 0.0)) return {};
    return fmt::format(
        "asymmetry left out in {:.2g} percent of the directions, where the images together are below {:g} "
        "percent of their maximum",
        100.0 * part, 100.0 * kFaintPart);
}

void SumImages(const std::vector<WeightedImage>& members, const std::string& output) {
    const std::vector<LoadedImage> loaded = LoadOnOneGrid(members);
    std::vector<SphereImage> images;
    std::vector<double> weights;
    for (std::size_t i = 0; i < loaded.size(); ++i) {
        images.push_back(loaded[i].image);
        weights.push_back(members[i].weight);
    }
    const SphereImage sum = WeightedSum(images, weights);
    Save(sum.Pixels(), sum, InformationOf(members, loaded), output);
}

std::string SaveAsymmetry(const std::string& a, const std::string& b, const std::string& output) {
    const std::vector<WeightedImage> members = {{a, 1.0}, {b, -1.0}};
    const std::vector<LoadedImage> loaded = LoadOnOneGrid(members);
    const ModulationFunction asymmetry =
        Naming(a + " and " + b, [&] { return AsymmetryOf(loaded[0].image, loaded[1].image); });
    ImageInformation information = InformationOf(members, loaded);
    information.texts[kQuantityKey] = {kAsymmetry};
    Save(asymmetry.Pixels(), loaded[0].image, std::move(information), output);
    return AsymmetryLeftOutText(asymmetry);
}

}  // namespace qvre
