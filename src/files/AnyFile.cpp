#include "files/AnyFile.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "foundation/FileReading.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "xml/ZfQBarnFile.h"

namespace qvre {

namespace {

constexpr std::streamoff kEndLength = 4096;
constexpr const char* kBlanks = " \t\r\n";

/// What recognises a file, without reading all of it: scattered waves may be large.
struct Ends {
    std::string head;
    std::string tail;
};

Ends ReadEnds(const std::string& path) {
    RequireFile(path);
    std::ifstream file(path, std::ios::binary);
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    const auto piece = [&](std::streamoff begin) {
        std::string text(static_cast<std::size_t>(std::min(length, kEndLength)), '\0');
        file.seekg(begin);
        file.read(text.data(), static_cast<std::streamsize>(text.size()));
        return text;
    };
    if (length <= 0) throw ZfError("it is empty");
    return {piece(0), piece(std::max<std::streamoff>(0, length - kEndLength))};
}

/// The first element, behind a declaration if there is one.
std::string RootOf(const std::string& head) {
    std::size_t begin = head.find('<');
    while (begin != std::string::npos && (head[begin + 1] == '?' || head[begin + 1] == '!'))
        begin = head.find('<', begin + 1);
    if (begin == std::string::npos) return {};
    const std::size_t end = head.find_first_of(" \t\r\n/>", begin + 1);
    return end == std::string::npos ? std::string() : head.substr(begin + 1, end - begin - 1);
}

void RequireEnd(const Ends& ends, const std::string& root) {
    std::string text = ends.tail;
    text.resize(text.find_last_not_of(kBlanks) + 1);
    if (!text.ends_with("</" + root + ">"))
        throw ZfError("it is cut short: it does not end with </" + root + ">");
}

/// Anything else would be read to its end, and a file of gigabytes be no cluster all the same.
void RequireXyz(const std::string& head) {
    if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF")) return;  // UTF-16
    const std::size_t mark = head.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    const std::size_t begin = std::min(head.find_first_not_of(kBlanks, mark), head.size());
    if (TextToInt(head.substr(begin)) <= 0)
        throw ZfError("it is no Extended XYZ: it does not begin with the number of atoms");
}

/// A frame that ends early and lines behind the last frame are no failure of the reader.
void RequireWholeXyz(const std::string& path, const Cluster& cluster) {
    const std::vector<std::string> lines = LineSplit(ReadTextFile(path));
    std::size_t next = 0;
    for (const Structure& structure : cluster.structures) {
        const std::int32_t count = TextToInt(lines[next]);
        if (static_cast<std::size_t>(std::max(count, 0)) != structure.atoms.size())
            throw ZfError("a frame tells " + std::to_string(count) + " atoms and has lines for " +
                          std::to_string(structure.atoms.size()) + "; its title must not be blank");
        next += structure.atoms.size() + 2;
    }
    if (next < lines.size()) throw ZfError("lines follow that belong to no frame, first: " + lines[next]);
}

template <class Document>
AnyFile::Content Loaded(void (*load)(Document&, const std::string&), const std::string& path) {
    Document document;
    load(document, path);
    return document;
}

AnyFile::Content LoadScatteredWaves(const std::string& path) {
    auto data = std::make_unique<ZfScatteringData>();
    ZfLoadScatteredWave(*data, path);
    return data;
}

/// Matrices and blocks of the file whose sizes tell a single element.
std::size_t SingleElements(const std::string& text) {
    const std::string column = "<ColSize>";
    const std::string row = "<RowSize>";
    std::size_t count = 0;
    for (std::size_t at = text.find(column); at != std::string::npos; at = text.find(column, at + 1)) {
        const std::size_t other = text.find(row, at);
        if (other == std::string::npos) break;
        if (text.compare(at + column.size(), 2, "1<") == 0 && text.compare(other + row.size(), 2, "1<") == 0)
            ++count;
    }
    return count;
}

template <class Set>
std::size_t SingleElements(const Set& set) {
    return static_cast<std::size_t>(
        std::count_if(set.begin(), set.end(), [](const auto& entry) { return entry.second.Count() == 1; }));
}

/// A matrix whose data do not fill its sizes becomes a single 0 as it is read.
void RequireWholeImages(const std::string& path, const ZfDocData& document) {
    const std::size_t read = SingleElements(document.imageSet) + SingleElements(document.waveSet) +
                             SingleElements(document.voxelSet);
    if (read > 0 && read > SingleElements(ReadWholeFile(path)))
        throw ZfError("it is damaged: the data of an image are too short for its sizes");
}

AnyFile::Content LoadImages(const std::string& path) {
    auto document = std::make_unique<ZfDocData>();
    ZfQBarnFile xml(path, "r");
    if (!document->SaveLoad(xml))
        throw ZfError("it is an image file of a version that is not known; known are 0 and 2 to 6");
    RequireWholeImages(path, *document);
    return document;
}

std::int32_t ImageVersion(const std::string& head) {
    const std::string tag = "<version>";
    const std::size_t found = head.find(tag);
    return found == std::string::npos ? 0 : TextToInt(head.substr(found + tag.size()));
}

AnyFile::Content LoadByRoot(const std::string& root, const std::string& path) {
    if (root == "zf_crystal_structure_data") return Loaded(ZfLoadCluster, path);
    if (root == "emitted_wave_data") return Loaded(ZfLoadEmittedWave, path);
    if (root == "PhaseShiftData") return Loaded(ZfLoadPhaseShift, path);
    if (root == "DocFluctuation") return Loaded(ZfLoadFluctuation, path);
    if (root == "QVRE_ScatteringData") return LoadScatteredWaves(path);
    return LoadImages(path);
}

void RequireKnown(const std::string& root) {
    for (const char* known : {"zf_crystal_structure_data", "emitted_wave_data", "PhaseShiftData",
                              "DocFluctuation", "QVRE_ScatteringData", ZfDocData::TypeName()})
        if (root == known) return;
    throw ZfError("it is no cluster, emitted wave, phase shift, fluctuation, scattered wave or image file");
}

AnyFile LoadXml(const std::string& path, const Ends& ends) {
    const std::string root = RootOf(ends.head);
    RequireKnown(root);
    RequireEnd(ends, root);
    const bool isImage = root == ZfDocData::TypeName();
    return {.path = path,
            .content = LoadByRoot(root, path),
            .imageVersion = isImage ? ImageVersion(ends.head) : 0};
}

AnyFile Load(const std::string& path) {
    const Ends ends = ReadEnds(path);
    if (!path.ends_with(".xyz")) return LoadXml(path, ends);
    RequireXyz(ends.head);
    AnyFile file{.path = path, .content = Loaded(ZfLoadCluster, path)};
    RequireWholeXyz(path, std::get<Cluster>(file.content));
    return file;
}

template <class Document>
Document LoadKind(const std::string& path, const std::string& kind) {
    AnyFile file = LoadAnyFile(path);
    if (auto* document = std::get_if<Document>(&file.content)) return std::move(*document);
    throw ZfError(path + ": it is no " + kind);
}

}  // namespace

AnyFile LoadAnyFile(const std::string& path) {
    return Naming(path, [&] { return Load(path); });
}

Cluster LoadClusterFile(const std::string& path) {
    return LoadKind<Cluster>(path, "cluster file (.xml_cl or .xyz)");
}

std::vector<EmittedWave> LoadWaveFile(const std::string& path) {
    return LoadKind<std::vector<EmittedWave>>(path, "emitted-wave file (.xml_emt)");
}

}  // namespace qvre
