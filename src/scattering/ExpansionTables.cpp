#include "scattering/ExpansionTables.h"

#include "scattering/WaveTranslation.h"

namespace qvre {

namespace {

template <class Entry, class Make>
const auto& Get(Entry& entry, const Make& make) {
    std::call_once(entry.flag, [&] { entry.part.emplace(make()); });
    return *entry.part;
}

}  // namespace

ExpansionTables::ExpansionTables(std::int32_t size) : lSize(size) {
    grid.lSize = size;
    grid.BuildGrid();
}

const ExpansionLevel& ExpansionTables::Level(std::int32_t level) const {
    return Get(levels_.at(static_cast<std::size_t>(level)), [&] { return ExpansionLevel(level, lSize); });
}

const std::vector<std::vector<double>>& ExpansionTables::Bessel() const {
    return Get(bessel_, [&] {
        std::vector<std::vector<double>> bessel;
        for (const double x : grid.groupKr) {
            std::vector<double>& j = bessel.emplace_back();
            for (const std::complex<double>& value : ScaledBessel(x, kLargestOrder, 1.0 / kOrderScale))
                j.push_back(value.real());
        }
        return bessel;
    });
}

const std::vector<double>& ExpansionTables::Weights(std::int32_t block) const {
    return Get(weights_.at(static_cast<std::size_t>(block)), [&] { return ProjectionWeights(block, lSize); });
}

}  // namespace qvre
