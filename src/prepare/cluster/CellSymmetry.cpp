#include "prepare/cluster/CellSymmetry.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

namespace qvre {

namespace {

std::vector<std::size_t> AtomsOfRarestElement(const CrystalCell& cell) {
    std::map<std::string, std::vector<std::size_t>> atoms;
    for (std::size_t atom = 0; atom < cell.atoms.size(); ++atom)
        atoms[cell.atoms[atom].element].push_back(atom);
    const auto rarest = std::min_element(atoms.begin(), atoms.end(), [](const auto& a, const auto& b) {
        return a.second.size() < b.second.size();
    });
    return rarest == atoms.end() ? std::vector<std::size_t>() : rarest->second;
}

/// Sets of atoms that grow together; the first atom of a set stands for it.
class AtomSets {
public:
    explicit AtomSets(std::size_t atoms) : set_(atoms) { std::iota(set_.begin(), set_.end(), 0U); }

    std::size_t Of(std::size_t atom) {
        while (set_[atom] != atom) atom = set_[atom] = set_[set_[atom]];
        return atom;
    }

    void Join(std::size_t a, std::size_t b) {
        const std::size_t setA = Of(a);
        const std::size_t setB = Of(b);
        set_[std::max(setA, setB)] = std::min(setA, setB);
    }

private:
    std::vector<std::size_t> set_;
};

gemmi::Mat33 Turn(double angle_deg) {
    const double c = std::cos(gemmi::rad(angle_deg));
    const double s = std::sin(gemmi::rad(angle_deg));
    return {c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0};
}

gemmi::Mat33 Mirror(double azimuth_deg) {
    const double c = std::cos(gemmi::rad(2.0 * azimuth_deg));
    const double s = std::sin(gemmi::rad(2.0 * azimuth_deg));
    return {c, s, 0.0, s, -c, 0.0, 0.0, 0.0, 1.0};
}

double Azimuth_deg(const gemmi::Vec3& v) {
    return gemmi::deg(std::atan2(v.y, v.x));
}

double Horizontal(const gemmi::Vec3& v) {
    return std::hypot(v.x, v.y);
}

/// The turns of a lattice are multiples of 60 and of 90 degrees.
std::optional<double> LatticeTurn(double angle_deg) {
    constexpr double kStep_deg = 30.0;
    constexpr double kRounding_deg = 0.5;
    const double steps = std::round(angle_deg / kStep_deg);
    if (std::abs(angle_deg - steps * kStep_deg) > kRounding_deg) return std::nullopt;
    const int step = (static_cast<int>(steps) % 12 + 12) % 12;
    if (step % 2 != 0 && step % 3 != 0) return std::nullopt;
    return step * kStep_deg;
}

/// Azimuth of a mirror plane, from 0 on and below 180.
double PlaneAzimuth(double azimuth_deg) {
    const double reduced = azimuth_deg - 180.0 * std::floor(azimuth_deg / 180.0);
    return reduced > 179.999 ? 0.0 : reduced;
}

}  // namespace

/// Brings the atoms of a cell elsewhere. The atom that spoils one attempt is the first to be looked at in the
/// next: most attempts end there.
class CellSymmetry::Mapping {
public:
    Mapping(const CrystalCell& cell, const CellGrid& grid, double tolerance)
        : cell_(cell), grid_(grid), tolerance_(tolerance), order_(cell.atoms.size()) {
        std::iota(order_.begin(), order_.end(), 0U);
    }

    /// Where each atom comes when the matrix (for fractions) acts around one place that goes to another;
    /// empty when an atom comes to none of its element.
    std::vector<std::size_t> Images(const gemmi::Mat33& matrix, const gemmi::Vec3& from,
                                    const gemmi::Vec3& to) {
        std::vector<std::size_t> images(order_.size());
        for (std::size_t& atom : order_) {
            const CellAtom& moved = cell_.atoms[atom];
            const std::vector<CellGrid::Found> found =
                grid_.Near(matrix.multiply(moved.fractional - from) + to, tolerance_);
            const auto image = std::find_if(found.begin(), found.end(), [&](const CellGrid::Found& near) {
                return cell_.atoms[near.atom].element == moved.element;
            });
            if (image == found.end()) {
                std::swap(order_[0], atom);
                return {};
            }
            images[atom] = image->atom;
        }
        return images;
    }

private:
    const CrystalCell& cell_;
    const CellGrid& grid_;
    double tolerance_;
    std::vector<std::size_t> order_;
};

CellSymmetry::CellSymmetry(const CrystalCell& cell, double tolerance_angstrom)
    : cell_(cell), tolerance_(tolerance_angstrom), grid_(cell), rarest_(AtomsOfRarestElement(cell)) {
    AtomSets sets(cell.atoms.size());
    Mapping mapping(cell, grid_, tolerance_);
    const gemmi::Vec3& from = cell.atoms[rarest_[0]].fractional;
    for (const std::size_t target : rarest_) {
        if (sets.Of(target) == sets.Of(rarest_[0])) continue;  // follows from translations that are known
        const std::vector<std::size_t> images =
            mapping.Images(gemmi::Mat33(), from, cell.atoms[target].fractional);
        for (std::size_t atom = 0; atom < images.size(); ++atom) sets.Join(atom, images[atom]);
    }
    for (std::size_t atom = 0; atom < cell.atoms.size(); ++atom) class_.push_back(sets.Of(atom));
    for (const std::size_t target : rarest_)
        if (class_[target] == class_[rarest_[0]])
            translations_.push_back(cell.atoms[target].fractional - from);
}

bool CellSymmetry::IsTranslation(const gemmi::Vec3& fractional) const {
    return std::any_of(translations_.begin(), translations_.end(), [&](const gemmi::Vec3& translation) {
        return cell_.DistanceFromLattice(fractional - translation) < 2.0 * tolerance_;
    });
}

std::vector<gemmi::Vec3> CellSymmetry::TranslationsWithin(double radius) const {
    const gemmi::Mat33 reciprocal = cell_.Reciprocal();
    std::vector<gemmi::Vec3> within;
    for (const gemmi::Vec3& translation : translations_) {
        const CellBox box(reciprocal, translation * -1.0, radius);
        for (int i = box.first[0]; i <= box.last[0]; ++i)
            for (int j = box.first[1]; j <= box.last[1]; ++j)
                for (int k = box.first[2]; k <= box.last[2]; ++k) {
                    const gemmi::Vec3 v = cell_.axes.multiply(translation + gemmi::Vec3(i, j, k));
                    if (v.length() <= radius + kSamePlace_angstrom) within.push_back(v);
                }
    }
    return within;
}

std::vector<SurfaceOperation> CellSymmetry::KeepingNormal(const gemmi::Mat33& frame) const {
    constexpr double kOffNormal_angstrom = 0.1;
    double radius = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        const gemmi::Vec3 v = frame.multiply(cell_.axes.column_copy(axis));
        if (Horizontal(v) > kOffNormal_angstrom && (radius == 0.0 || v.length() < radius))
            radius = v.length();
    }
    std::vector<gemmi::Vec3> vectors;
    for (const gemmi::Vec3& translation : TranslationsWithin(radius)) {
        const gemmi::Vec3 v = frame.multiply(translation);
        if (Horizontal(v) > kOffNormal_angstrom) vectors.push_back(v);
    }
    // An operation brings the shortest translation to one of the same length and height.
    const gemmi::Vec3 shortest = *std::min_element(
        vectors.begin(), vectors.end(),
        [](const gemmi::Vec3& a, const gemmi::Vec3& b) { return a.length_sq() < b.length_sq(); });
    std::vector<SurfaceOperation> candidates;
    for (const gemmi::Vec3& v : vectors) {
        if (std::abs(v.z - shortest.z) > kSamePlace_angstrom ||
            std::abs(Horizontal(v) - Horizontal(shortest)) > kSamePlace_angstrom)
            continue;
        if (const auto turn = LatticeTurn(Azimuth_deg(v) - Azimuth_deg(shortest)))
            candidates.push_back({false, *turn, {}});
        candidates.push_back({true, PlaneAzimuth((Azimuth_deg(v) + Azimuth_deg(shortest)) / 2.0), {}});
    }
    std::sort(candidates.begin(), candidates.end(), [](const auto& a, const auto& b) {
        return std::pair(a.isMirror, a.angle_deg) < std::pair(b.isMirror, b.angle_deg);
    });

    const gemmi::Mat33 toFractions = cell_.Reciprocal().multiply(frame.transpose());
    const gemmi::Mat33 fromFractions = frame.multiply(cell_.axes);
    Mapping mapping(cell_, grid_, tolerance_);
    std::vector<SurfaceOperation> operations;
    for (const SurfaceOperation& candidate : candidates) {
        const gemmi::Mat33 matrix =
            toFractions.multiply(candidate.isMirror ? Mirror(candidate.angle_deg) : Turn(candidate.angle_deg))
                .multiply(fromFractions);
        if (!IsTranslation(matrix.column_copy(0)) || !IsTranslation(matrix.column_copy(1)) ||
            !IsTranslation(matrix.column_copy(2)))
            continue;
        // Up to translations the first atom of a class stands for all of it.
        for (const std::size_t target : rarest_) {
            if (class_[target] != target) continue;
            SurfaceOperation operation = candidate;
            operation.images =
                mapping.Images(matrix, cell_.atoms[rarest_[0]].fractional, cell_.atoms[target].fractional);
            if (!operation.images.empty()) operations.push_back(std::move(operation));
        }
    }
    return operations;
}

}  // namespace qvre
