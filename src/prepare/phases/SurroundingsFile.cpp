#include <cmath>
#include <string>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/phases/Surroundings.h"

namespace qvre {

namespace {

AtomSurroundings SpeciesOfLine(const std::vector<std::string>& words) {
    if (words.size() < 4 || words.size() > 5) throw ZfError("wanted is: species NAME ELEMENT VOLUME [COUNT]");
    AtomSurroundings species{words[1], words[2], {}, 0.0, 1.0, 1.0};
    species.cellVolume = StrictNumber(words[3], "volume") / std::pow(kBohr_angstrom, 3);
    if (words.size() == 5) species.weight = StrictNumber(words[4], "count");
    return species;
}

AtomShell ShellOfLine(const std::vector<std::string>& words) {
    if (words.size() != 3) throw ZfError("wanted is: ELEMENT DISTANCE COUNT");
    AtomShell shell{words[0], StrictNumber(words[1], "distance") / kBohr_angstrom,
                    StrictNumber(words[2], "count")};
    if (!(shell.distance > 0.0) || !(shell.count > 0.0))
        throw ZfError("distance and count have to be above 0");
    return shell;
}

void ReadLine(const std::string& line, std::vector<AtomSurroundings>& list) {
    const std::vector<std::string> words = TokenSplit(line.substr(0, line.find('#')));
    if (words.empty()) return;
    if (words[0] == "species") {
        list.push_back(SpeciesOfLine(words));
    } else {
        if (list.empty()) throw ZfError("a line \"species NAME ELEMENT VOLUME\" has to come first");
        list.back().shells.push_back(ShellOfLine(words));
    }
}

}  // namespace

std::vector<AtomSurroundings> ReadSurroundings(const std::string& path) {
    std::vector<AtomSurroundings> list;
    for (const std::string& line : LineSplit(ReadTextFile(path))) {
        try {
            ReadLine(line, list);
        } catch (ZfError& error) {
            std::string where = path;
            where.append(": \"").append(line).append("\": ");
            error.message.insert(0, where);
            throw;
        }
    }
    if (list.empty()) throw ZfError(path + " holds no species");
    return list;
}

}  // namespace qvre
