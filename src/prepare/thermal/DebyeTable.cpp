#include "prepare/thermal/DebyeTable.h"

#include <QString>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "foundation/ZfFileQt.h"

DebyeTable::DebyeTable(const std::string& path) {
    ZfFileQt file(QString::fromStdString(path), "r");
    std::string text;
    file.ReadAll(text);
    for (const std::string& line : LineSplit(text)) {
        if (line[0] == '#' || line.starts_with("element")) continue;
        const std::vector<std::string> fields = TokenSplit(line);
        const double temperature = fields.size() == 2 ? TextToDouble(fields[1]) : 0.0;
        if (temperature <= 0.0)
            throw ZfError("The table of Debye temperatures has a line that is none: " + line);
        temperatures_[fields[0]] = temperature;
    }
}

std::optional<double> DebyeTable::Find(const std::string& element) const {
    const auto found = temperatures_.find(element);
    if (found == temperatures_.end()) return std::nullopt;
    return found->second;
}
