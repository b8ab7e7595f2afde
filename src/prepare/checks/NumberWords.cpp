#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FileReading.h"
#include "foundation/Text.h"
#include "prepare/checks/PartChecks.h"

namespace qvre {

namespace {

/// Elements that hold no plain number: labels, for which such a word is as good as any, and matrices.
constexpr std::array<std::string_view, 9> kOthers = {
    "name", "atom", "AtomName", "AtomElement", "FileName", "elements", "binary", "base64", "base64b"};

struct FoundWord {
    std::size_t line = 0;  ///< from 1
    std::string text;
};

/// "nan", "-inf", "Infinity", "NaN(ind)", with anything but a letter behind.
bool IsNoFiniteNumber(std::string_view text) {
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) text.remove_prefix(1);
    const auto end =
        std::find_if(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) == 0; });
    std::string word(text.begin(), end);
    for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return word == "nan" || word == "inf" || word == "infinity";
}

/// Those directly behind a start tag; in front of further elements there are blanks alone.
std::vector<FoundWord> WordsInXml(std::string_view text) {
    std::vector<FoundWord> words;
    std::size_t line = 1;
    std::size_t counted = 0;
    for (std::size_t end = text.find('>'); end != std::string_view::npos; end = text.find('>', end + 1)) {
        const std::size_t begin = std::min(text.find_first_not_of(" \t\r\n", end + 1), text.size());
        const std::size_t length = std::string_view("-infinity").size() + 1;
        if (!IsNoFiniteNumber(text.substr(begin, length))) continue;
        const std::string_view before = text.substr(0, end);
        const std::string_view tag = before.substr(before.rfind('<') + 1);
        if (std::find(kOthers.begin(), kOthers.end(), tag) != kOthers.end()) continue;
        line += static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(counted),
                                                    text.begin() + static_cast<std::ptrdiff_t>(begin), '\n'));
        counted = begin;
        const std::size_t wordEnd = std::min(text.find_first_of(" \t\r\n<", begin), text.size());
        words.push_back({line, fmt::format("<{}>{}", tag, text.substr(begin, wordEnd - begin))});
    }
    return words;
}

/// Those behind the names of atoms; a title may say what it likes.
std::vector<FoundWord> WordsInXyz(std::string_view text) {
    std::vector<FoundWord> words;
    std::int32_t atomsLeft = 0;
    bool isTitle = false;
    std::size_t line = 0;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::vector<std::string> tokens = TokenSplit(text.substr(begin, end - begin));
        begin = end + 1;
        ++line;
        if (tokens.empty()) continue;
        if (isTitle) {
            isTitle = false;
        } else if (atomsLeft <= 0) {
            atomsLeft = TextToInt(tokens[0]);
            isTitle = true;
        } else {
            --atomsLeft;
            const auto word = std::find_if(tokens.begin() + 1, tokens.end(), IsNoFiniteNumber);
            if (word != tokens.end()) words.push_back({line, *word});
        }
    }
    return words;
}

}  // namespace

void CheckNumberWords(const InputSet& inputs, InputFindings& findings) {
    for (const std::string& file : inputs.files) {
        const std::string text = ReadTextFile(file);
        const std::vector<FoundWord> words = file.ends_with(".xyz") ? WordsInXyz(text) : WordsInXml(text);
        if (words.empty()) continue;
        findings.push_back(
            {Severity::kMisfit,
             fmt::format("{} line {}: {} is no finite number, and would be read as 0{}", file, words[0].line,
                         words[0].text,
                         words.size() > 1 ? fmt::format(" (so are {} more)", words.size() - 1) : ""),
             "correct the file, or make it again"});
    }
}

}  // namespace qvre
