#include "image/ZfDocData.h"

#include <fstream>
#include <limits>
#include <string_view>
#include <utility>

#include "foundation/Text.h"
#include "foundation/ZfError.h"

using namespace qvre;

namespace {

constexpr std::size_t kHeadLines = 4;
constexpr std::string_view kVersionOpen = "<version>";
constexpr std::string_view kVersionClose = "</version>";

std::int32_t NextId() {
    static std::int32_t last = 0;
    last = last == std::numeric_limits<std::int32_t>::max() ? 1 : last + 1;
    return last;
}

std::vector<std::string> ReadHead(std::istream& file) {
    std::vector<std::string> lines;
    std::string line;
    while (lines.size() < kHeadLines && std::getline(file, line)) lines.push_back(std::move(line));
    return lines;
}

/// Number of the first line that holds the text; their count if none does.
std::size_t FindLine(const std::vector<std::string>& lines, std::string_view text) {
    std::size_t n = 0;
    while (n < lines.size() && lines[n].find(text) == std::string::npos) ++n;
    return n;
}

std::int32_t VersionIn(std::string_view line) {
    const std::size_t begin = line.find(kVersionOpen) + kVersionOpen.size();
    const std::size_t end = line.find(kVersionClose, begin);
    return end == std::string_view::npos ? 0 : TextToInt(line.substr(begin, end - begin));
}

template <class Table, class Item>
void SetFirst(Table& table, const std::string& key, const Item& item) {
    auto& list = table[key];
    if (list.empty())
        list.push_back(item);
    else
        list.front() = item;
}

}  // namespace

ZfDocData::ZfDocData() : id(NextId()) {
    ZfFloatMatrix& image = imageSet[0.0F];
    image.SetSize(16, 16);
    image.Clear();
}

std::int32_t ZfDocData::CheckType(const std::string& fileName) const {
    std::ifstream file(fileName);
    if (!file) throw ZfError("FileCannotOpen. ZfDocData::CheckType():" + fileName);
    const std::vector<std::string> lines = ReadHead(file);
    if (FindLine(lines, TypeName()) == lines.size()) return -1;
    const std::size_t n = FindLine(lines, kVersionOpen);
    return n == 0 || n == lines.size() ? 0 : VersionIn(lines[n]);
}

void ZfDocData::SetInfoString(InfoString& table, const std::string& key, const std::string& text) {
    SetFirst(table, key, text);
}

void ZfDocData::SetInfoValue(InfoValue& table, const std::string& key, double number) {
    SetFirst(table, key, number);
}

ZfFloatMatrix& ZfDocData::OnlyImage() {
    std::erase_if(imageSet, [](const auto& entry) { return entry.first != 0.0F; });
    return imageSet[0.0F];
}
