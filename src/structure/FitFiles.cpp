#include "structure/FitFiles.h"

#include <cctype>
#include <set>

namespace qvre::fit_files {

namespace {

std::string Plain(std::string name) {
    for (char& letter : name)
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0 &&
            std::string("._-").find(letter) == std::string::npos)
            letter = '_';
    return name;
}

std::string Lower(std::string name) {
    for (char& letter : name) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return name;
}

}  // namespace

std::vector<std::string> PartsOfNames(const std::vector<FittedData>& data) {
    std::vector<std::string> parts;
    std::set<std::string> taken;
    for (const FittedData& one : data) {
        const std::string plain = Plain(one.name);
        std::string part = plain;
        for (int number = 2; !taken.insert(Lower(part)).second; ++number)
            part = plain + "_" + std::to_string(number);
        parts.push_back(part);
    }
    return parts;
}

std::string Comparison(const std::string& data) {
    return "comparison_" + data + ".csv";
}

std::string DataPicture(const std::string& data) {
    return "data_" + data + ".png";
}

std::string ProfilePicture(const std::string& parameter) {
    return "profile_" + parameter + ".png";
}

}  // namespace qvre::fit_files
