#include "prepare/atomic/BindingEnergies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "input/ZfAtomName.h"
#include "prepare/atomic/CoreOrbital.h"

namespace {

const BindingEnergies kTable(QVRE_DATA "/binding_energies.csv");

std::vector<CoreLevel> Lines() {
    std::vector<CoreLevel> lines;
    for (int n = 1; n <= 4; ++n)
        for (int l = 0; l < n; ++l)
            for (const int twiceJ : {2 * l - 1, 2 * l + 1})
                if (twiceJ > 0) lines.push_back({n, l, l == 0 ? 0 : twiceJ});
    return lines;
}

/// Square roots of the energies of a line by atomic number, 0 where the table has none.
std::vector<double> Roots(const CoreLevel& line) {
    std::vector<double> roots(93, 0.0);
    for (int z = 1; z <= 92; ++z) {
        ZfAtomName atom;
        atom.SetAtomicNumber(z);
        roots[static_cast<std::size_t>(z)] = std::sqrt(kTable.Find(atom.name, line).value_or(0.0));
    }
    return roots;
}

}  // namespace

// H. G. J. Moseley, Phil. Mag. 26, 1024 (1913): the root of an energy is nearly linear in Z. A slip of 2
// percent of a deep level, or of 3 eV of a shallow one, breaks the line.
TEST(BindingEnergies, RootsOfALineFollowMoseley) {
    constexpr double kBend = 0.25;  // root of eV; the largest is that of Ca 3p, before the 3d shell opens
    int compared = 0;
    for (const CoreLevel& line : Lines()) {
        const std::vector<double> root = Roots(line);
        double last = 0.0;
        for (std::size_t z = 1; z + 1 < root.size(); ++z) {
            if (root[z] == 0.0) continue;
            EXPECT_GT(root[z], last) << line.Name() << " of Z = " << z;
            last = root[z];
            if (root[z - 1] == 0.0 || root[z + 1] == 0.0) continue;
            EXPECT_NEAR(root[z], 0.5 * (root[z - 1] + root[z + 1]), kBend) << line.Name() << " of Z = " << z;
            ++compared;
        }
    }
    EXPECT_GT(compared, 350);
}

TEST(BindingEnergies, LinesAndMeansOfPairs) {
    const auto find = [](const char* element, const char* level) {
        return kTable.Find(element, ParseCoreLevel(level)).value_or(0.0);
    };
    EXPECT_EQ(find("Cu", "2p3/2"), 932.7);
    EXPECT_EQ(find("Cu", "2p1/2"), 952.3);
    EXPECT_NEAR(find("Cu", "2p"), (952.3 + 2.0 * 932.7) / 3.0, 1e-9);
    EXPECT_NEAR(find("Au", "4f"), (3.0 * 87.6 + 4.0 * 84.0) / 7.0, 1e-9);
    EXPECT_EQ(find("C", "1s"), 284.2);
    EXPECT_EQ(find("Cu", "4f") + find("X", "1s") + find("Hf", "4d"), 0.0);
    for (const std::string bad : {"", "1p", "5s", "2p5/2", "2P", "2p3", "2p ", "3d1/2"})
        EXPECT_NE(ErrorText([&] { ParseCoreLevel(bad); }).find(bad + "\" is no core level"),
                  std::string::npos);
}
