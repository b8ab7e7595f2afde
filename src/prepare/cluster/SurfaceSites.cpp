#include "prepare/cluster/SurfaceSites.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kSame_angstrom = 0.02;

using Corner = SurfaceSite::Corner;

/// From the first of three points to that as far from each; none for points in a row.
std::optional<gemmi::Vec3> Circumcentre(const gemmi::Vec3& a, const gemmi::Vec3& b) {
    const double twice = 2.0 * (a.x * b.y - a.y * b.x);
    if (std::abs(twice) < kSame_angstrom) return std::nullopt;
    return gemmi::Vec3((b.y * a.length_sq() - a.y * b.length_sq()) / twice,
                       (a.x * b.length_sq() - b.x * a.length_sq()) / twice, 0.0);
}

gemmi::Vec3 Projected(const gemmi::Vec3& v) {
    return {v.x, v.y, 0.0};
}

/// A nucleus of the topmost layer, projected.
struct CornerAtom {
    Corner corner;
    gemmi::Vec3 place;
};

struct Site {
    SurfaceSite site;
    gemmi::Vec3 place;
    double radius = 0.0;      ///< distance of the nearest atoms of the topmost layer
    int neighbours = 0;       ///< at this distance
    bool isOverAtom = false;  ///< of the second layer
};

/// The nuclei of the topmost layer.
class TopLayer {
public:
    explicit TopLayer(const SurfaceSlab& slab) : slab_(slab) {
        constexpr int kReach = 3;
        for (std::size_t atom = 0; atom < slab.atoms.size(); ++atom) {
            const gemmi::Vec3 place = Projected(slab.atoms[atom].position);
            if (slab.atoms[atom].layer == 2) second_.push_back(place);
            if (slab.atoms[atom].layer != 1) continue;
            home_.push_back({{atom, 0, 0}, place});
            for (int i = -kReach; i <= kReach; ++i)
                for (int j = -kReach; j <= kReach; ++j)
                    all_.push_back({{atom, i, j}, place + slab.lattice[0] * i + slab.lattice[1] * j});
        }
    }

    SurfaceSite Top() const { return {{home_.front().corner}}; }

    /// Half-way between two atoms, the shortest way first.
    std::vector<Site> Bridges() const {
        std::vector<Site> bridges;
        for (const CornerAtom& atom : home_)
            for (const CornerAtom& other : Around(atom)) {
                const double radius = (atom.place - other.place).length() / 2.0;
                if (auto site = EmptyAt({{atom.corner, other.corner}}, radius))
                    if (site->neighbours == 2) bridges.push_back(*std::move(site));
            }
        Sort(bridges, [](const Site& site) { return site.radius; });
        return bridges;
    }

    /// Places as far as possible from the atoms: the corners of their Voronoi polygons of the largest radius.
    std::vector<Site> Hollows() const {
        std::vector<Site> hollows;
        for (const CornerAtom& atom : home_) {
            const std::vector<CornerAtom> around = Around(atom);
            for (std::size_t i = 0; i < around.size(); ++i)
                for (std::size_t j = 0; j < i; ++j)
                    if (const auto centre =
                            Circumcentre(around[i].place - atom.place, around[j].place - atom.place))
                        if (auto site = EmptyAt({{atom.corner, around[i].corner, around[j].corner}},
                                                centre->length()))
                            hollows.push_back(*std::move(site));
        }
        Sort(hollows, [](const Site& site) { return -site.radius; });
        const auto smaller = std::find_if(hollows.begin(), hollows.end(), [&](const Site& site) {
            return site.radius < hollows.front().radius - kSame_angstrom;
        });
        hollows.erase(smaller, hollows.end());
        return hollows;
    }

private:
    std::vector<CornerAtom> Around(const CornerAtom& centre) const {
        const double reach = slab_.lattice[0].length() + slab_.lattice[1].length() + kSame_angstrom;
        std::vector<CornerAtom> around;
        for (const CornerAtom& atom : all_) {
            const double distance = (atom.place - centre.place).length();
            if (distance > kSame_angstrom && distance <= reach) around.push_back(atom);
        }
        return around;
    }

    /// The site when no atom lies nearer than the radius.
    std::optional<Site> EmptyAt(const SurfaceSite& between, double radius) const {
        Site site{between, between.PlaceOn(slab_), radius, 0, false};
        for (const CornerAtom& atom : all_) {
            const double distance = (atom.place - site.place).length();
            if (distance < radius - kSame_angstrom) return std::nullopt;
            if (distance < radius + kSame_angstrom) ++site.neighbours;
        }
        site.isOverAtom = std::any_of(second_.begin(), second_.end(), [&](const gemmi::Vec3& below) {
            return slab_.Shortest(below - site.place).length() < radius / 4.0;
        });
        return site;
    }

    void Sort(std::vector<Site>& sites, const std::function<double(const Site&)>& first) const {
        const auto order = [&](const Site& site) {
            const gemmi::Vec3 from = site.place - home_.front().place;
            const double azimuth = std::atan2(from.y, from.x);
            return std::tuple(std::lround(first(site) * 100.0), std::lround(from.length() * 100.0),
                              std::lround(std::abs(azimuth) * 100.0), azimuth < 0.0);
        };
        std::sort(sites.begin(), sites.end(),
                  [&](const Site& a, const Site& b) { return order(a) < order(b); });
    }

    const SurfaceSlab& slab_;
    std::vector<CornerAtom> home_;
    std::vector<CornerAtom> all_;
    std::vector<gemmi::Vec3> second_;
};

struct NamedSite {
    std::string name;
    SurfaceSite site;
};

/// All that this surface has.
std::vector<NamedSite> SitesOf(const SurfaceSlab& slab) {
    const TopLayer layer(slab);
    std::vector<NamedSite> sites = {{"top", layer.Top()}};
    const std::vector<Site> bridges = layer.Bridges();
    if (!bridges.empty()) {
        sites.push_back({"bridge", bridges.front().site});
        const auto longer = std::find_if(bridges.begin(), bridges.end(), [&](const Site& site) {
            return site.radius > bridges.front().radius + kSame_angstrom;
        });
        if (longer != bridges.end()) sites.push_back({"long-bridge", longer->site});
    }
    const std::vector<Site> hollows = layer.Hollows();
    if (hollows.empty()) return sites;
    const auto first = [&](bool isOverAtom) {
        return std::find_if(hollows.begin(), hollows.end(),
                            [&](const Site& site) { return site.isOverAtom == isOverAtom; });
    };
    const auto fcc = first(false);
    const auto hcp = first(true);
    if (hollows.front().neighbours == 3 && fcc != hollows.end() && hcp != hollows.end()) {
        sites.push_back({"fcc", fcc->site});
        sites.push_back({"hcp", hcp->site});
    } else {
        sites.push_back({"hollow", hollows.front().site});
    }
    return sites;
}

}  // namespace

gemmi::Vec3 SurfaceSite::PlaceOn(const SurfaceSlab& slab) const {
    const auto place = [&](const Corner& corner) {
        return Projected(slab.atoms[corner.atom].position + slab.lattice[0] * corner.i +
                         slab.lattice[1] * corner.j);
    };
    const gemmi::Vec3 first = place(corners.front());
    if (corners.size() == 1) return first;
    if (corners.size() == 2) return (first + place(corners[1])) * 0.5;
    const auto centre = Circumcentre(place(corners[1]) - first, place(corners[2]) - first);
    if (!centre) throw ZfError("The atoms around the site of an adsorbate come to lie in a row");
    return first + *centre;
}

SurfaceSite FindSite(const SurfaceSlab& slab, const std::string& name) {
    const std::string wanted = name == "atop" ? "top" : name;
    std::vector<std::string> names;
    for (const NamedSite& site : SitesOf(slab)) {
        if (site.name == wanted) return site.site;
        names.push_back(site.name);
    }
    throw ZfError(
        fmt::format("This surface has no site \"{}\"; it has {}, or give the place as fractions of its cell",
                    name, fmt::join(names, ", ")));
}

gemmi::Vec3 SitePlace(const SurfaceSlab& slab, const std::string& name) {
    return FindSite(slab, name).PlaceOn(slab);
}

}  // namespace qvre
