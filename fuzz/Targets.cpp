#include "Targets.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "TempFolder.h"
#include "crystal/ZfParser.h"
#include "files/AnyFile.h"
#include "files/FileSummary.h"
#include "files/RunSettings.h"
#include "foundation/Console.h"
#include "foundation/Text.h"
#include "foundation/ZfADateTime.h"
#include "foundation/ZfError.h"
#include "foundation/ZfFloatMatrix3D.h"
#include "image/ZfDocData.h"
#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "input/ZfPhaseShiftDocument.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/cluster/EmitterShares.h"
#include "prepare/phases/PhaseShiftTable.h"
#include "recipe/RecipePlan.h"
#include "recipe/RecipeTable.h"
#include "report/compare/MeasuredSummary.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnXml.h"
#include "xml/ZfBinaryDataToText.h"
#include "xml/ZfQBarnFile.h"

using namespace qvre;

namespace {

/// `read` may throw ZfError and nothing else.
template <class Reader>
void Refusing(const Reader& read) {
    try {
        read();
    } catch (const ZfError&) {
    }
}

/// What `cmd_qvre` reads may also end in a bare text or in the failure of an access out of range.
template <class Reader>
void RefusingAny(const Reader& read) {
    try {
        read();
    } catch (const ZfError&) {
    } catch (const char*) {
    } catch (const std::out_of_range&) {
    }
}

/// The input as a file of that name, in a folder of this process.
std::string InputFile(const std::string& name, std::string_view bytes) {
    static const TempFolder folder;
    return folder.Write(name, std::string(bytes));
}

/// A file of that name, as `cmd_qvre` loads it, and as `qvre` loads it and tells what it holds.
template <class Document>
FuzzTarget FileTarget(const char* target, const char* name, void (*load)(Document&, const std::string&)) {
    return {target, [name, load](std::string_view input) {
                const std::string path = InputFile(name, input);
                RefusingAny([&] {
                    Document document;
                    load(document, path);
                });
                Refusing([&] { FileSummary(LoadAnyFile(path)); });
                Refusing([&] {
                    RunSettings settings;
                    AddFileSettings(settings, path);
                });
            }};
}

void ReadXml(std::string_view input) {
    RefusingAny([&] {
        ZfBarnXml xml("r");
        xml.Parse(std::string(input));
        xml.Document();
        while (xml.OpenRack("a")) {
            std::string text;
            bool flag = false;
            std::int32_t integer = 0;
            float small = 0.0F;
            double number = 0.0;
            ZfADateTime date;
            std::vector<double> numbers;
            std::vector<std::string> texts;
            xml.RawValue("raw", text, "");
            xml.Text("text", text, "");
            xml.Bool("flag", flag, false);
            xml.Int32("integer", integer, 0);
            xml.Float("float", small, 0.0F);
            xml.Double("double", number, 0.0);
            xml.DoubleList("numbers", numbers);
            xml.StringList("texts", texts);
            xml.DateTime("date", date);
            xml.CloseRack("a");
        }
    });
}

void ReadMatrix(std::string_view input) {
    const std::string text(input);
    const auto read = [&text](auto matrix) {
        RefusingAny([&] {
            ZfBarnXml xml("r");
            xml.Parse(text);
            while (xml.Matrix("m", matrix, "b")) {
            }
        });
    };
    read(ZfDoubleMatrix());
    read(ZfFloatMatrix());
    read(ZfLDoubleMatrix());
    RefusingAny([&] {
        ZfBarnXml xml("r");
        xml.Parse(text);
        ZfFloatMatrix3D voxels;
        while (xml.OpenRack("m")) {
            xml.Matrix3D(voxels, "b");
            xml.CloseRack();
        }
    });
}

/// The first byte chooses the form. What was decoded comes back from its own text.
void ReadBinaryText(std::string_view input) {
    if (input.empty()) return;
    const bool alphabetB = (input[0] & 1) != 0;
    const bool standard = (input[0] & 2) != 0;
    const ZfBinaryDataToText codec;
    RefusingAny([&] {
        const auto bytes = codec.Decode(input.substr(1), alphabetB, standard);
        if (bytes.empty()) return;  // the text of no bytes is a group of three
        std::string text;
        codec.Encode(bytes.data(), static_cast<std::int64_t>(bytes.size()), text, alphabetB, standard);
        if (codec.Decode(text, alphabetB, standard) != bytes) std::abort();
    });
}

void LoadImage(ZfDocData& image, const std::string& path) {
    image.CheckType(path);
    ZfQBarnFile xml(path, "r");
    image.SaveLoad(xml);
}

void ReadDate(std::string_view input) {
    Refusing([&] {
        ZfADateTime date;
        date.FromText(std::string(input));
        ZfADateTime again;
        again.FromText(date.ToText());
    });
}

void ReadTexts(std::string_view input) {
    double value = 0.0;
    std::string rest;
    NumberSplit(input, value, rest);
    TextToInt(input);
    TextToUnsigned(input);
    TextToFloat(input);
    ScanDouble(input);
    TokenSplit(input);
    LineSplit(input);
    for (const RecipeUnit unit : {RecipeUnit::kNone, RecipeUnit::kElectronVolt, RecipeUnit::kAngstrom})
        Refusing([&] { ParseQuantity(std::string(input), unit); });
}

/// Read and planned; nothing is calculated or written.
void ReadRecipe(std::string_view input) {
    const std::string path = InputFile("recipe.toml", input);
    Refusing([&] {
        RecipeOptions options;
        options.folder = path + "-results";
        PlanRecipe(path, options);
    });
}

/// The columns by their names, and by the letters of an extension.
void ReadMeasured(std::string_view input) {
    for (const char* letters : {"", "etpais"})
        Refusing([&] { MeasuredSummary(ReadMeasuredTable(std::string(input), letters), {45.0, {}}); });
}

void ReadPhaseTable(std::string_view input, PhaseTableFormat format) {
    const std::string path = InputFile("table", input);
    Refusing([&] {
        PhaseTableChoice choice;
        choice.format = format;
        if (format == PhaseTableFormat::kCsv) choice.element = "Cu";
        const PhaseShiftTable table = ReadPhaseShiftTable(path, choice);
        PhasesAt(table, 0.5 * (table.energies_eV.front() + table.energies_eV.back()), false);
    });
}

}  // namespace

const std::vector<FuzzTarget>& FuzzTargets() {
    using Bytes = std::string_view;
    static const std::vector<FuzzTarget> targets = {
        {"binary_text", ReadBinaryText},
        {"cif", [](Bytes input) { Refusing([&] { ParseCif(std::string(input)); }); }},
        FileTarget("cluster_xml", "cluster.xml_cl", ZfLoadCluster),
        FileTarget("cluster_xyz", "cluster.xyz", ZfLoadCluster),
        {"date", ReadDate},
        {"emitter_shares",
         [](Bytes input) {
             const std::string path = InputFile("c.emitters.csv", input);
             Refusing([&] { LoadEmitterShares(path); });
         }},
        {"expression", [](Bytes input) { RefusingAny([&] { ZfParser().Calculate(std::string(input)); }); }},
        {"expression_cell", [](Bytes input) { Refusing([&] { ParseExpressionCell(std::string(input)); }); }},
        FileTarget("fluctuation", "fluctuation.xml_flu", ZfLoadFluctuation),
        FileTarget("image", "pattern.xml_img", LoadImage),
        {"matrix", ReadMatrix},
        {"measured", ReadMeasured},
        FileTarget("phase_shifts", "phaseshift.xml_ph", ZfLoadPhaseShift),
        {"phase_table_blocks", [](Bytes input) { ReadPhaseTable(input, PhaseTableFormat::kBlocks); }},
        {"phase_table_csv", [](Bytes input) { ReadPhaseTable(input, PhaseTableFormat::kCsv); }},
        {"phase_table_leed", [](Bytes input) { ReadPhaseTable(input, PhaseTableFormat::kLeed); }},
        {"poscar", [](Bytes input) { Refusing([&] { ParsePoscar(std::string(input)); }); }},
        {"recipe", ReadRecipe},
        FileTarget("scattered_wave", "scatteredwave.xml_sf", ZfLoadScatteredWave),
        {"texts", ReadTexts},
        FileTarget("waves", "emitter.xml_emt", ZfLoadEmittedWave),
        {"weights", [](Bytes input) { Refusing([&] { ZfDebye().LoadAtomicWeight(input); }); }},
        {"xml", ReadXml},
        {"xyz_cell", [](Bytes input) { Refusing([&] { ParseXyzCell(std::string(input)); }); }},
    };
    return targets;
}

const FuzzTarget& FindFuzzTarget(std::string_view name) {
    for (const FuzzTarget& target : FuzzTargets())
        if (target.name == name) return target;
    std::fprintf(stderr, "No such target. There are:\n");
    for (const FuzzTarget& target : FuzzTargets()) std::fprintf(stderr, "%s\n", target.name.c_str());
    std::exit(2);
}
