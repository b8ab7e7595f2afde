#include "input/Cluster.h"

#include <gtest/gtest.h>

#include <set>

#include "ErrorText.h"
#include "XmlText.h"
#include "foundation/Text.h"

namespace {

std::string AtomXml(const std::string& name, double x, double y, double z, const std::string& more = "") {
    return Tag("i", Tag("name", name) + Tag("x", DoubleToText(x)) + Tag("y", DoubleToText(y)) +
                        Tag("z", DoubleToText(z)) + more);
}

std::string ClusterXml(const std::string& first, const std::string& second = "") {
    std::string list = Tag("structure", Tag("atoms", first));
    if (!second.empty()) list += Tag("structure", Tag("atoms", second));
    return Tag("zf_crystal_structure_data", Tag("data", Tag("list_structure", list)));
}

Cluster Read(const std::string& text, bool validate) {
    XmlReader xml(text);
    Cluster cluster;
    cluster.Exchange(xml, validate);
    return cluster;
}

}  // namespace

TEST(Cluster, DisplacementsComeInThreeForms) {
    const std::string iso = Tag("MSD_iso", Tag("U_iso", "0.5"));
    const std::string aniso =
        Tag("MSD_aniso", Tag("aniso_U_11", "1") + Tag("aniso_U_12", "2") + Tag("aniso_U_13", "3") +
                             Tag("aniso_U_22", "4") + Tag("aniso_U_23", "5") + Tag("aniso_U_33", "6"));
    const Cluster cluster =
        Read(ClusterXml(AtomXml("a", 0, 0, 0) + AtomXml("b", 0, 0, 1, iso) +
                        AtomXml("c", 0, 0, 2, iso + aniso) + AtomXml("d", 0, 0, 3, Tag("MSD_iso", ""))),
             true);
    std::vector<ClusterAtom> atoms =
        cluster.structures[0].atoms;  // a copy of atoms whose U came from Scale()
    EXPECT_EQ(atoms[0].U.Count(), 0);
    EXPECT_EQ(atoms[1].U.At(0, 0), 0.5 * 1e-20);
    EXPECT_EQ(atoms[3].U.At(0, 0), 0.0);
    // Columns of the tensor; (2, 1) repeats U_33.
    const double expected[3][3] = {{1, 2, 3}, {2, 4, 5}, {3, 6, 6}};
    for (int col = 0; col < 3; ++col)
        for (int row = 0; row < 3; ++row)
            EXPECT_EQ(atoms[2].U.At(col, row), expected[col][row] * 1e-20) << col << row;
}

TEST(Cluster, WritesToTheByteAndLeavesTensorsOut) {
    Cluster cluster =
        Read(ClusterXml(AtomXml("&lt;", 0, 0, 0, Tag("MSD_iso", Tag("U_iso", "0.0123456789"))) +
                        AtomXml("b", 1.23456789, -1, 2e-7, Tag("atom", "Cu") + Tag("MSD_aniso", ""))),
             true);
    ZfBarnXml xml("w");
    cluster.Exchange(xml, true);
    EXPECT_EQ(xml.Document(),
              "<zf_crystal_structure_data><data><list_structure><structure><atoms>"
              "<i><name>&lt;</name>\n<atom></atom>\n<valency>0</valency>\n<x>0</x>\n<y>0</y>\n<z>0</z>\n"
              "<MSD_iso><U_iso>0.0123457</U_iso>\n</MSD_iso>\n</i>\n"
              "<i><name>b</name>\n<atom>Cu</atom>\n<valency>0</valency>\n<x>1.23457</x>\n<y>-1</y>\n"
              "<z>2e-07</z>\n</i>\n"
              "</atoms>\n</structure>\n</list_structure>\n</data>\n</zf_crystal_structure_data>\n");
}

TEST(Cluster, EqualDistancesKeepTheOrderOfTheSelectionSort) {
    // "x" changes places with "a", which so comes to stand behind "b" and "c" at the same distance.
    const Cluster cluster = Read(ClusterXml(AtomXml("a", 2, 0, 0) + AtomXml("b", 0, 2, 0) +
                                            AtomXml("c", 0, 0, -2) + AtomXml("x", 0, 0, 0)),
                                 false);
    std::string names;
    for (const ClusterAtom& atom : cluster.structures[0].atoms) names += atom.name;
    EXPECT_EQ(names, "xbca");
}

// Half an fcc crystal: the squared distances of one shell are equal on paper, but summed in metres as
// x*x + y*y + z*z some differ in the last bit, and that bit decides.
TEST(Cluster, LastBitsOrderAnFccHalfSpace) {
    constexpr double kHalfConstant_A = 1.8075;
    std::string atoms;
    for (int i = 0; i < 13 * 13 * 7; ++i) {
        const int h = i % 13 - 6;
        const int k = i / 13 % 13 - 6;
        const int l = -(i / 169);
        if ((h + k + l) % 2 == 0)
            atoms += AtomXml(std::to_string(h * h + k * k + l * l), h * kHalfConstant_A, k * kHalfConstant_A,
                             l * kHalfConstant_A);
    }
    std::set<std::string> splitShells;
    std::string shellBefore;
    double keyBefore = 0.0;
    const Cluster cluster = Read(ClusterXml(atoms), true);
    for (const ClusterAtom& atom : cluster.structures[0].atoms) {
        const double* p = atom.position.Data();
        const double key = p[0] * p[0] + p[1] * p[1] + p[2] * p[2];
        EXPECT_LE(keyBefore, key) << atom.name;
        if (atom.name == shellBefore && key != keyBefore) splitShells.insert(atom.name);
        shellBefore = atom.name;
        keyBefore = key;
    }
    EXPECT_GE(splitShells.size(), 5U);  // else this crystal tests nothing
}

TEST(Cluster, ValidationTellsTheStructure) {
    const std::string good = AtomXml("a", 0.00999, 0, 0) + AtomXml("b", 0, 0, 1);
    const std::pair<std::string, const char*> cases[] = {
        {good, "no failure"},
        {AtomXml("a", 0.01, 0, 0), "Emitter shoud be located at origin (0,0,0)/CLUSER:1"},
        {AtomXml("c", 0, 0, 2.5) + AtomXml("b", 0, 0, 2) + AtomXml("a", 0, 0, 0),
         "Atomic distance should be larger thatn 0.5A 1.vs.2/CLUSER:1"},
        {AtomXml("c", 0, 0, 2.501) + AtomXml("b", 0, 0, 2) + AtomXml("a", 0, 0, 0), "no failure"},
        {" ", "Structure has no atoms/CLUSER:1"}};
    for (const auto& c : cases) {
        EXPECT_EQ(ErrorText([&] { Read(ClusterXml(good, c.first), true); }), c.second);
        EXPECT_EQ(ErrorText([&] { Read(ClusterXml(good, c.first), false); }), "no failure");
    }
}
