#include <gtest/gtest.h>

#include <set>

#include "RunQvre.h"
#include "TempFolder.h"
#include "report/SphereFunctions.h"

// An option that is dropped on its way leaves a file as it would be without.

TEST(Options, EachChangesTheFile) {
    const TempFolder folder;
    const auto image = [&](const std::string& name, double tilt, double twist) {
        const auto values = [=](double x, double y, double z) {
            return 2.0 + z + tilt * (x + 0.3 * y * z) + twist * y;
        };
        return WriteImageFile(folder.Path(name), Sampled(SphereMap::kEquidistantCylindrical, 5.0, values));
    };
    const std::string a = image("a.xml_img", 0.5, 0.0);
    const std::string b = image("b.xml_img", 0.3, 0.1);
    const std::string i0 = "--i0 " + image("i0.xml_img", 0.0, 0.0);
    const std::string copper = QVRE_EXAMPLES "/cu001_small/";
    const std::string table = folder.Write("t.csv", "Ek_eV,d0\n100,80\n200,60\n300,10\n400,0.2\n");
    const std::tuple<std::string, std::string, std::string> commands[] = {
        {"cluster --preset Cu --atoms 20", ".xyz",
         "; --surface 1,1,1; --azimuth 10; --domains 0,45; --layer 2; --shape paraboloid; --debye Cu=343; "
         "--debye Cu=343 --temperature 77; --title words; --digits 3"},
        {"cluster --preset Si --atoms 20", ".xyz", "; --site 1"},
        {"emit " + copper + "cluster.xml_cl --level 2p --photon Al --polarisation 0,0,1", ".xml_emt",
         "; --fermi 7; --binding 930; --weight 2; --exchange none; --relativistic; --zero -2; "
         "--analyser-at 30,40"},
        {"phases " + copper + "cluster.xml_cl --energy 560", ".xml_ph",
         "; --exchange slater; --relativistic; --radius 1.2; --zero -2; --lmax 4; --cut 5; --radial 9;"
         "--label words"},
        {"phases --table " + table + " --format csv --name Cu --radius 1.2 --energy 150,250", ".xml_ph",
         "; --linear; --element Ni"},
        {"thermal --element Cu", ".xml_flu", "; --temperature 77; --model einstein; --debye Cu=315"},
        {"plot " + a + " " + b, ".png",
         "; " + i0 +
             "; --fold 3; --mirror 20; --acceptance 9; --energy 60 --inner-potential 12; --colours grey;"
             "--view orthographic; --range 0 9; --title words; --caption words; --rings 15; --per-row 1;"
             "--width 300; --polar-cut 0; --azimuthal-cut 45"},
        {"export " + a, ".csv", "; " + i0 + "; --hemisphere; --run " + copper + "cluster.xml_cl"},
        {"compare " + a + " " + b, ".csv",
         "--background 3; --background mean; --background 3 --theta 10 70; --background 3 --rotate; "
         "--background 3 " +
             i0 + "; --background 3 --i0-b " + folder.Path("i0.xml_img")}};
    for (const auto& [words, extension, options] : commands) {
        std::set<std::string> files;
        std::istringstream list(options);
        for (std::string option; std::getline(list, option, ';');) {
            const std::string output = "out" + extension;
            const QvreResult result = RunQvre(words + " " + option + " -o " + folder.Path(output));
            EXPECT_EQ(result.status, 0) << words << " " << option << result.errors;
            EXPECT_TRUE(files.insert(folder.Read(output)).second) << words << " " << option;
        }
    }
}
