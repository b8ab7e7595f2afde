#include "prepare/cluster/SurfaceSites.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <tuple>
#include <vector>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kSame_angstrom = 0.02;

struct Site {
    gemmi::Vec3 place;
    double radius = 0.0;      ///< distance of the nearest atoms of the topmost layer
    int neighbours = 0;       ///< at this distance
    bool isOverAtom = false;  ///< of the second layer
};

/// The nuclei of the topmost layer, projected.
class TopLayer {
public:
    explicit TopLayer(const SurfaceSlab& slab) : slab_(slab) {
        for (const SlabAtom& atom : slab.atoms) {
            const gemmi::Vec3 place(atom.position.x, atom.position.y, 0.0);
            if (atom.layer == 1) home_.push_back(place);
            if (atom.layer == 2) second_.push_back(place);
        }
        constexpr int kReach = 3;
        for (const gemmi::Vec3& place : home_)
            for (int i = -kReach; i <= kReach; ++i)
                for (int j = -kReach; j <= kReach; ++j)
                    all_.push_back(place + slab.lattice[0] * i + slab.lattice[1] * j);
    }

    gemmi::Vec3 Origin() const { return home_.front(); }

    /// Half-way between two atoms, the shortest way first.
    std::vector<Site> Bridges() const {
        std::vector<Site> bridges;
        for (const gemmi::Vec3& atom : home_)
            for (const gemmi::Vec3& other : Around(atom))
                if (const auto site = EmptyAt((atom + other) * 0.5, (atom - other).length() / 2.0))
                    if (site->neighbours == 2) bridges.push_back(*site);
        Sort(bridges, [](const Site& site) { return site.radius; });
        return bridges;
    }

    /// Places as far as possible from the atoms: the corners of their Voronoi polygons of the largest radius.
    std::vector<Site> Hollows() const {
        std::vector<Site> hollows;
        for (const gemmi::Vec3& atom : home_) {
            const std::vector<gemmi::Vec3> around = Around(atom);
            for (std::size_t i = 0; i < around.size(); ++i)
                for (std::size_t j = 0; j < i; ++j)
                    if (const auto centre = Circumcentre(around[i] - atom, around[j] - atom))
                        if (const auto site = EmptyAt(atom + *centre, centre->length()))
                            hollows.push_back(*site);
        }
        Sort(hollows, [](const Site& site) { return -site.radius; });
        const auto smaller = std::find_if(hollows.begin(), hollows.end(), [&](const Site& site) {
            return site.radius < hollows.front().radius - kSame_angstrom;
        });
        hollows.erase(smaller, hollows.end());
        return hollows;
    }

private:
    std::vector<gemmi::Vec3> Around(const gemmi::Vec3& place) const {
        const double reach = slab_.lattice[0].length() + slab_.lattice[1].length() + kSame_angstrom;
        std::vector<gemmi::Vec3> around;
        for (const gemmi::Vec3& atom : all_) {
            const double distance = (atom - place).length();
            if (distance > kSame_angstrom && distance <= reach) around.push_back(atom);
        }
        return around;
    }

    static std::optional<gemmi::Vec3> Circumcentre(const gemmi::Vec3& a, const gemmi::Vec3& b) {
        const double twice = 2.0 * (a.x * b.y - a.y * b.x);
        if (std::abs(twice) < kSame_angstrom) return std::nullopt;
        return gemmi::Vec3((b.y * a.length_sq() - a.y * b.length_sq()) / twice,
                           (a.x * b.length_sq() - b.x * a.length_sq()) / twice, 0.0);
    }

    /// The place when no atom lies nearer than the radius.
    std::optional<Site> EmptyAt(const gemmi::Vec3& place, double radius) const {
        Site site{place, radius, 0, false};
        for (const gemmi::Vec3& atom : all_) {
            const double distance = (atom - place).length();
            if (distance < radius - kSame_angstrom) return std::nullopt;
            if (distance < radius + kSame_angstrom) ++site.neighbours;
        }
        site.isOverAtom = std::any_of(second_.begin(), second_.end(), [&](const gemmi::Vec3& below) {
            return slab_.Shortest(below - place).length() < radius / 4.0;
        });
        return site;
    }

    void Sort(std::vector<Site>& sites, const std::function<double(const Site&)>& first) const {
        const auto order = [&](const Site& site) {
            const gemmi::Vec3 from = site.place - Origin();
            const double azimuth = std::atan2(from.y, from.x);
            return std::tuple(std::lround(first(site) * 100.0), std::lround(from.length() * 100.0),
                              std::lround(std::abs(azimuth) * 100.0), azimuth < 0.0);
        };
        std::sort(sites.begin(), sites.end(),
                  [&](const Site& a, const Site& b) { return order(a) < order(b); });
    }

    const SurfaceSlab& slab_;
    std::vector<gemmi::Vec3> home_;
    std::vector<gemmi::Vec3> all_;
    std::vector<gemmi::Vec3> second_;
};

struct NamedSite {
    std::string name;
    gemmi::Vec3 place;
};

/// All that this surface has.
std::vector<NamedSite> SitesOf(const SurfaceSlab& slab) {
    const TopLayer layer(slab);
    std::vector<NamedSite> sites = {{"top", layer.Origin()}};
    const std::vector<Site> bridges = layer.Bridges();
    if (!bridges.empty()) {
        sites.push_back({"bridge", bridges.front().place});
        const auto longer = std::find_if(bridges.begin(), bridges.end(), [&](const Site& site) {
            return site.radius > bridges.front().radius + kSame_angstrom;
        });
        if (longer != bridges.end()) sites.push_back({"long-bridge", longer->place});
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
        sites.push_back({"fcc", fcc->place});
        sites.push_back({"hcp", hcp->place});
    } else {
        sites.push_back({"hollow", hollows.front().place});
    }
    return sites;
}

}  // namespace

gemmi::Vec3 SitePlace(const SurfaceSlab& slab, const std::string& name) {
    std::vector<std::string> names;
    for (const NamedSite& site : SitesOf(slab)) {
        if (site.name == name) return site.place;
        names.push_back(site.name);
    }
    throw ZfError(
        fmt::format("This surface has no site \"{}\"; it has {}, or give the place as fractions of its cell",
                    name, fmt::join(names, ", ")));
}

}  // namespace qvre
