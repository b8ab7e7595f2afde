#include "structure/StructurePicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <gemmi/elem.hpp>
#include <gemmi/math.hpp>
#include <optional>
#include <utility>

#include "foundation/ZfError.h"
#include "report/picture/AxisTicks.h"
#include "report/picture/Canvas.h"
#include "structure/ElementColours.h"

namespace qvre {

namespace {

// Points, on a page as wide as a column.
constexpr double kLeft = 10.0;  // beside it on the right, the distances of layers
constexpr double kTop = 20.0;
constexpr double kWidth = 180.0;
constexpr double kAboveHeight = 140.0;
constexpr double kBetween = 6.0;
constexpr double kLegend = 22.0;
constexpr double kLabel = 7.5;
constexpr double kSmallLabel = 6.5;

constexpr double kRadius = 0.85;  // of a disc, beside the covalent one
constexpr double kAboveTop_angstrom = 1.6;

/// x to the right and y up as seen from above, z out of the surface; angstrom.
struct SeenAtom {
    gemmi::Vec3 place;
    std::string element;
    bool isEmitter = false;
};

/// What a picture shows of a surface.
struct Scene {
    std::vector<SeenAtom> atoms;
    double width = 0.0;  ///< angstrom; the middle is at x = y = 0
    double depth = 0.0;  ///< angstrom below the topmost atom
    double top = 0.0;    ///< z of the topmost atom
    std::optional<std::array<gemmi::Vec3, 4>> cell;
    bool hasLayers = false;  ///< whose distances are told
};

double Radius(const std::string& element) {
    return kRadius * gemmi::Element(element).covalent_r();
}

Colour Paler(const Colour& colour, double part) {
    return {colour.red + part * (1.0 - colour.red), colour.green + part * (1.0 - colour.green),
            colour.blue + part * (1.0 - colour.blue)};
}

// From a cell

/// Directions of the picture: y along the shorter translation, z out of the surface.
gemmi::Mat33 FrameOf(const gemmi::Mat33& axes) {
    const gemmi::Vec3 a = axes.column_copy(0);
    const gemmi::Vec3 b = axes.column_copy(1);
    constexpr double kRounding = 1e-6;
    const gemmi::Vec3 y = (b.length() < a.length() - kRounding ? b : a).normalized();
    gemmi::Vec3 z = a.cross(b).normalized();
    if (z.dot(axes.column_copy(2)) < 0.0) z = -z;
    const gemmi::Vec3 x = y.cross(z);
    return {x.x, x.y, x.z, y.x, y.y, y.z, z.x, z.y, z.z};
}

/// The atoms as one piece below the widest gap along the third axis, and the width of the gap, angstrom.
double JoinBelowGap(CrystalCell& cell) {
    std::vector<double> heights;
    for (CellAtom& atom : cell.atoms) {
        atom.fractional.z -= std::floor(atom.fractional.z);
        heights.push_back(atom.fractional.z);
    }
    std::sort(heights.begin(), heights.end());
    double top = heights.back();
    double widest = heights.front() + 1.0 - heights.back();
    for (std::size_t i = 1; i < heights.size(); ++i) {
        if (heights[i] - heights[i - 1] <= widest) continue;
        widest = heights[i] - heights[i - 1];
        top = heights[i - 1];
    }
    for (CellAtom& atom : cell.atoms)
        if (atom.fractional.z > top) atom.fractional.z -= 1.0;
    const gemmi::Vec3 normal = cell.axes.column_copy(0).cross(cell.axes.column_copy(1)).normalized();
    return widest * std::abs(normal.dot(cell.axes.column_copy(2)));
}

Scene SceneOf(CrystalCell cell) {
    constexpr double kVacuum_angstrom = 5.0;
    if (cell.atoms.empty()) throw ZfError("There is no atom to draw");
    Scene scene;
    scene.hasLayers = true;
    const double gap = JoinBelowGap(cell);
    const gemmi::Mat33 frame = FrameOf(cell.axes);
    const gemmi::Vec3 a = frame.multiply(cell.axes.column_copy(0));
    const gemmi::Vec3 b = frame.multiply(cell.axes.column_copy(1));
    const gemmi::Vec3 c = frame.multiply(cell.axes.column_copy(2));
    scene.width = std::clamp(2.4 * std::max(a.length(), b.length()), 12.0, 26.0);

    const auto topmost = std::max_element(
        cell.atoms.begin(), cell.atoms.end(),
        [](const CellAtom& one, const CellAtom& other) { return one.fractional.z < other.fractional.z; });
    const gemmi::Vec3 corner = (a + b) * -0.5;
    const gemmi::Vec3 shift = corner - frame.multiply(cell.Position(*topmost));
    scene.cell = {corner, corner + a, corner + a + b, corner + b};
    scene.depth = 0.5 * scene.width;
    const int below = gap > kVacuum_angstrom ? 0 : static_cast<int>(std::ceil(scene.depth / std::abs(c.z)));
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    const auto cells = [&](int axis) {
        return static_cast<int>(std::ceil(scene.width * reciprocal.row_copy(axis).length())) + 1;
    };
    for (const CellAtom& atom : cell.atoms)
        for (int k = -below; k <= 0; ++k)
            for (int i = -cells(0); i <= cells(0); ++i)
                for (int j = -cells(1); j <= cells(1); ++j)
                    scene.atoms.push_back(
                        {frame.multiply(cell.Position(atom, i, j, k)) + shift, atom.element});
    return scene;
}

Scene SceneOf(const Structure& structure) {
    if (structure.atoms.empty()) throw ZfError("There is no atom to draw");
    Scene scene;
    double lowest = 0.0;
    double nearest = 1.0;
    std::size_t emitter = 0;
    for (const ClusterAtom& atom : structure.atoms) {
        ZfLDoubleMatrix p = atom.PositionAngstrom();
        const gemmi::Vec3 place(static_cast<double>(p.VectorAt(0)), static_cast<double>(p.VectorAt(1)),
                                static_cast<double>(p.VectorAt(2)));
        if (place.length() < nearest) {
            nearest = place.length();
            emitter = scene.atoms.size();
        }
        scene.atoms.push_back({place, atom.atom});
        scene.width =
            std::max({scene.width, 2.0 * (std::abs(place.x) + 1.5), 2.0 * (std::abs(place.y) + 1.5)});
        scene.top = std::max(scene.top, place.z);
        lowest = std::min(lowest, place.z);
    }
    scene.atoms[emitter].isEmitter = nearest < 1.0;
    scene.depth = scene.top - lowest + 1.2;
    return scene;
}

// Drawing

/// One of the views.
struct ViewBox {
    double MiddleX() const { return left + kWidth / 2; }

    double left = 0.0;
    double top = 0.0;
    double height = 0.0;
    double scale = 0.0;  ///< points an angstrom
    double zeroY = 0.0;  ///< points, of the lower coordinate 0
};

/// The farthest first; `right`, `up` and `near` of each atom as this view has them.
struct Projected {
    double right = 0.0;
    double up = 0.0;
    double near = 0.0;
    const SeenAtom* atom = nullptr;
};

void DrawEmitter(Canvas& canvas, double x, double y, double radius) {
    canvas.SetColour({0.85, 0.0, 0.1});
    canvas.SetLine(1.6);
    canvas.Circle(x, y, radius);
}

void DrawAtoms(Canvas& canvas, std::vector<Projected> atoms, const ViewBox& box, double fading_angstrom) {
    std::stable_sort(atoms.begin(), atoms.end(),
                     [](const Projected& one, const Projected& other) { return one.near < other.near; });
    const double nearest = atoms.back().near;
    canvas.ClipTo(box.left, box.top, kWidth, box.height);
    for (const Projected& one : atoms) {
        const double x = box.MiddleX() + box.scale * one.right;
        const double y = box.zeroY - box.scale * one.up;
        const double radius = box.scale * Radius(one.atom->element);
        if (x + radius < box.left || x - radius > box.left + kWidth || y + radius < box.top ||
            y - radius > box.top + box.height)
            continue;
        const double pale = 0.75 * std::min(1.0, (nearest - one.near) / fading_angstrom);
        canvas.SetColour(Paler(ElementColour(one.atom->element), pale));
        canvas.Dot(x, y, radius);
        canvas.SetColour(Paler({}, 0.15 + 0.7 * pale));
        canvas.SetLine(0.6);
        canvas.Circle(x, y, radius);
    }
    for (const Projected& one : atoms) {  // seen through those before it
        if (!one.atom->isEmitter) continue;
        DrawEmitter(canvas, box.MiddleX() + box.scale * one.right, box.zeroY - box.scale * one.up,
                    0.5 * box.scale * Radius(one.atom->element));
    }
    canvas.EndClip();
    canvas.SetColour({});
    canvas.SetLine(0.7);
    canvas.Rectangle(box.left, box.top, kWidth, box.height);
}

void DrawFromAbove(Canvas& canvas, const Scene& scene, const ViewBox& box) {
    constexpr double kFading_angstrom = 6.0;
    std::vector<Projected> atoms;
    for (const SeenAtom& atom : scene.atoms)
        if (atom.place.z > scene.top - scene.depth)
            atoms.push_back({atom.place.x, atom.place.y, atom.place.z, &atom});
    DrawAtoms(canvas, atoms, box, kFading_angstrom);
    if (!scene.cell) return;
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t i = 0; i <= scene.cell->size(); ++i) {
        const gemmi::Vec3& corner = scene.cell->at(i % scene.cell->size());
        x.push_back(box.MiddleX() + box.scale * corner.x);
        y.push_back(box.zeroY - box.scale * corner.y);
    }
    canvas.ClipTo(box.left, box.top, kWidth, box.height);
    canvas.SetColour({1.0, 1.0, 1.0}, 0.8);
    canvas.SetLine(2.4);
    canvas.Polyline(x, y);
    canvas.SetColour({});
    canvas.SetLine(1.1);
    canvas.Polyline(x, y);
    canvas.EndClip();
}

/// Mean heights of atoms that lie less than a quarter of an angstrom apart, from above.
std::vector<double> Layers(const Scene& scene) {
    constexpr double kOneLayer_angstrom = 0.25;
    std::vector<double> heights;
    for (const SeenAtom& atom : scene.atoms)
        if (atom.place.z > scene.top - scene.depth) heights.push_back(atom.place.z);
    std::sort(heights.rbegin(), heights.rend());
    std::vector<double> layers;
    for (std::size_t i = 0; i < heights.size();) {
        const std::size_t first = i;
        double sum = 0.0;
        for (; i < heights.size() && heights[first] - heights[i] < kOneLayer_angstrom; ++i) sum += heights[i];
        layers.push_back(sum / static_cast<double>(i - first));
    }
    return layers;
}

void TellLayers(Canvas& canvas, const Scene& scene, const ViewBox& box) {
    const std::vector<double> layers = Layers(scene);
    canvas.SetColour({});
    canvas.SetLine(0.6);
    const double right = box.left + kWidth;
    double lastText = -1e3;
    for (std::size_t i = 0; i < layers.size(); ++i) {
        const double y = box.zeroY - box.scale * layers[i];
        if (y > box.top + box.height - 2.0) break;
        canvas.Line(right, y, right + 4, y);
        if (i == 0) continue;
        const double middle = (y + box.zeroY - box.scale * layers[i - 1]) / 2;
        if (middle - lastText < kSmallLabel) continue;
        lastText = middle;
        canvas.Text(right + 6, middle, fmt::format("{:.3f} \u00C5", layers[i - 1] - layers[i]),
                    {.size = kSmallLabel, .alignX = 1.0});
    }
}

void DrawFromSide(Canvas& canvas, const Scene& scene, const ViewBox& box) {
    constexpr double kFading_angstrom = 8.0;
    std::vector<Projected> atoms;
    for (const SeenAtom& atom : scene.atoms)
        if (std::abs(atom.place.y) < scene.width / 2 && atom.place.z > scene.top - scene.depth - 2.5)
            atoms.push_back({atom.place.x, atom.place.z, -atom.place.y, &atom});
    DrawAtoms(canvas, atoms, box, kFading_angstrom);
    if (scene.hasLayers) TellLayers(canvas, scene, box);
}

void DrawLegend(Canvas& canvas, const Scene& scene, const ViewBox& box) {
    const double y = box.top + box.height + 10;
    std::vector<std::string> elements;
    bool hasEmitter = false;
    for (const SeenAtom& atom : scene.atoms) {
        hasEmitter = hasEmitter || atom.isEmitter;
        if (std::find(elements.begin(), elements.end(), atom.element) == elements.end())
            elements.push_back(atom.element);
    }
    double x = box.left + 5;
    for (const std::string& element : elements) {
        canvas.SetColour(ElementColour(element));
        canvas.Dot(x, y, 4.0);
        canvas.SetColour(Paler({}, 0.15));
        canvas.SetLine(0.6);
        canvas.Circle(x, y, 4.0);
        canvas.SetColour({});
        canvas.Text(x + 7, y, element, {.size = kLabel, .alignX = 1.0});
        x += 19 + canvas.TextWidth(element, {.size = kLabel});
    }
    if (hasEmitter) {
        DrawEmitter(canvas, x, y, 3.0);
        canvas.SetColour({});
        canvas.Text(x + 7, y, "emitter", {.size = kLabel, .alignX = 1.0});
    }
    const double length_angstrom = scene.width > 20.0 ? 5.0 : scene.width > 10.0 ? 3.0 : 2.0;
    const double right = box.left + kWidth;
    const double left = right - box.scale * length_angstrom;
    canvas.SetLine(1.2);
    canvas.Line(left, y + 3, right, y + 3);
    canvas.Line(left, y + 1, left, y + 5);
    canvas.Line(right, y + 1, right, y + 5);
    canvas.Text((left + right) / 2, y - 1, fmt::format("{:g} \u00C5", length_angstrom),
                {.size = kLabel, .alignY = -1.0});
}

void Draw(const Scene& scene, const std::string& title, Canvas& canvas) {
    const double scale = kWidth / scene.width;
    const double aboveHeight = scene.hasLayers ? kAboveHeight : kWidth;
    const double left = scene.hasLayers ? kLeft : (kColumnWidth - kWidth) / 2;
    ViewBox above{.left = left, .top = kTop, .height = aboveHeight, .scale = scale};
    above.zeroY = kTop + aboveHeight / 2;
    ViewBox side{.left = left,
                 .top = kTop + aboveHeight + kBetween,
                 .height = scale * (scene.depth + kAboveTop_angstrom),
                 .scale = scale};
    side.zeroY = side.top + scale * (scene.top + kAboveTop_angstrom);
    canvas.BeginPage(kColumnWidth, side.top + side.height + kLegend);
    canvas.FittedText(kColumnWidth / 2, 10, kColumnWidth - 8, title, {.size = 9.0, .bold = true});
    DrawFromAbove(canvas, scene, above);
    DrawFromSide(canvas, scene, side);
    DrawLegend(canvas, scene, side);
}

}  // namespace

void DrawSurface(const CrystalCell& cell, const std::string& title, Canvas& canvas) {
    Draw(SceneOf(cell), title, canvas);
}

void DrawClusterViews(const Structure& structure, const std::string& title, Canvas& canvas) {
    Draw(SceneOf(structure), title, canvas);
}

}  // namespace qvre
