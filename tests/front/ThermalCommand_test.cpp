#include "RunQvre.h"
#include "TempFolder.h"

// The files of the examples were made by another program.
TEST(ThermalCommand, MakesTheFilesOfTheExamples) {
    const TempFolder folder;
    const std::string cluster = QVRE_EXAMPLES "/gaas001/cluster.xml_cl";
    const std::pair<std::string, const char*> cases[] = {
        {"--debye Cu=343", "cu001_small/fluctuation.xml_flu"},
        {"--debye As=360,Ga=360 " + cluster, "gaas001/fluctuation.xml_flu"},
        {cluster + " --model einstein", "gaas001/fluctuation_einstein.xml_flu"},
        {"--model cluster", "gaas001/fluctuation_cluster.xml_flu"}};
    for (const auto& [arguments, example] : cases) {
        RunQvre("thermal --temperature 300 " + arguments + " -o " + folder.Path("made.xml_flu"));
        EXPECT_EQ(folder.Read("made.xml_flu"), FileText(std::string(QVRE_EXAMPLES "/") + example));
    }
}

TEST(ThermalCommand, TellsUiso) {
    const TempFolder folder;
    // The figures of the README of the example.
    const std::pair<std::string, const char*> cases[] = {
        {QVRE_EXAMPLES "/gaas001/cluster_uiso.xyz --model cluster",
         "  As   Uiso 0.004496 angstrom^2 on 78 atoms\n  Ga   Uiso 0.004831 angstrom^2 on 70 atoms\n"},
        {"--debye As=360", "  As   Uiso 0.0044962 angstrom^2 (B 0.355)   Debye temperature 360 K (given)\n"},
        {"--model einstein --temperature 600", "  all elements   Uiso 0.0118342 angstrom^2 (B 0.934)\n"},
        {"--uiso Cu=0.007 --B Ti=0.52 --debye O=500",
         "  O   Uiso 0.0109151 angstrom^2 (B 0.862)   Debye temperature 500 K (given)\n"
         "  Cu   Uiso 0.007 angstrom^2 (B 0.553)   Debye temperature 313.283 K (for the given U)\n"
         "  Ti   Uiso 0.00658588 angstrom^2 (B 0.52)   Debye temperature 372.139 K (for the given U)\n"},
        {"--B Mg=0.31 --temperature 77",
         "  Mg   Uiso 0.0039262 angstrom^2 (B 0.31)   Debye temperature 342.674 K (for the given U)\n"},
        // At 77 K the zero-point motion is two thirds of it: no warning.
        {"--element Si --temperature 77",
         "  Si   Uiso 0.002795 angstrom^2 (B 0.221)   Debye temperature 377.821 K (table of pure "
         "elements)\n"},
        {"--debye C=2230",
         "  C   Uiso 0.000730923 angstrom^2 (B 0.0577)   Debye temperature 2230 K (given)\n"
         "  warning: U of C is 2.08 times too small: 300 K is low against its Debye temperature of 2230 K; "
         "the formula is one of high temperature; give 0.00151955 angstrom^2 as uiso, unless the temperature "
         "was "
         "made from a U\n"}};
    for (const auto& [arguments, told] : cases) {
        const std::string text = RunQvre("thermal -o " + folder.Path("f.xml_flu ") + arguments).output;
        EXPECT_EQ(text.substr(text.find('\n') + 1), told);
    }
}
