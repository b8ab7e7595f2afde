#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <utility>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "foundation/ZfFloatMatrix3D.h"
#include "xml/ZfBarnXml.h"
#include "xml/ZfBinaryDataToText.h"

using namespace qvre;

// Matrices in a document: as readable text, or as the bytes of the element block (column index fastest,
// little-endian IEEE 754) in one of the forms of ZfBinaryDataToText.

namespace {

/// Tags of the binary child: the one that is written, and an old one that is read as well.
template <class Member>
constexpr std::array<std::string_view, 2> kBinaryTags{};
template <>
constexpr std::array<std::string_view, 2> kBinaryTags<ZfDoubleMatrix> = {"ZfDoubleMatrixBinary",
                                                                         "TDoubleMatrixBinary"};
template <>
constexpr std::array<std::string_view, 2> kBinaryTags<ZfFloatMatrix> = {"ZfFloatMatrixBinary"};
template <>
constexpr std::array<std::string_view, 2> kBinaryTags<ZfLDoubleMatrix> = {"LDoubleMatrixBinary"};

struct BinaryForm {
    std::string_view tag;
    bool alphabetB;
    bool standard;
};
constexpr BinaryForm kBinary = {"binary", false, false};
constexpr BinaryForm kBase64 = {"base64", true, false};
constexpr BinaryForm kBase64Standard = {"base64b", false, true};
constexpr std::array<BinaryForm, 3> kBinaryForms = {kBinary, kBase64, kBase64Standard};

/// Sizes and begins as a file gives them.
struct Shape {
    std::int32_t colSize = 0;
    std::int32_t colBegin = 0;
    std::int32_t rowSize = 0;
    std::int32_t rowBegin = 0;

    std::int64_t Count() const { return std::int64_t{colSize} * rowSize; }

    void Exchange(ZfBarnXml& xml) {
        xml.Int32("ColSize", colSize, 0);
        xml.Int32("ColBegin", colBegin, 0);
        xml.Int32("RowSize", rowSize, 0);
        xml.Int32("RowBegin", rowBegin, 0);
    }

    template <class Member>
    static Shape Of(const Member& matrix) {
        return {matrix.ColSize, matrix.ColBegin, matrix.RowSize, matrix.RowBegin};
    }

    template <class Member>
    void Apply(Member& matrix) const {
        matrix.SetSize(colSize, rowSize);
        matrix.ColBegin = colBegin;
        matrix.RowBegin = rowBegin;
    }

    /// A bad file may tell sizes that its text cannot fill; the memory is then not asked for.
    void CheckPlausible(std::size_t textLength) const {
        if (colSize > 0 && rowSize > 0 && Count() > static_cast<std::int64_t>(textLength))
            throw ZfError("Data is short");
    }
};

/// "1.000000e+00," for every element and a line feed behind every row and before the first.
std::string ElementText(const ZfLDoubleMatrix& matrix) {
    std::string text = "\n";
    text.reserve(static_cast<std::size_t>(matrix.Count()) * 14 + static_cast<std::size_t>(matrix.RowSize) +
                 1);
    std::array<char, 32> buffer;
    for (std::int64_t i = 0; i < matrix.Count(); ++i) {
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), matrix.Data()[i],
                                       std::chars_format::scientific, 6);
        text.append(buffer.data(), end.ptr).append(",");
        if ((i + 1) % matrix.ColSize == 0) text += '\n';
    }
    if (matrix.ColSize == 0) text.append(static_cast<std::size_t>(matrix.RowSize), '\n');
    return text;
}

/// Commas alone delimit; the last byte of the text is never a value of its own.
void ParseElements(std::string_view text, ZfLDoubleMatrix& matrix) {
    const auto length = static_cast<std::int64_t>(text.size());
    const std::int64_t count = matrix.Count();
    std::int64_t stored = 0;
    std::int64_t position = 0;
    while (true) {
        while (position < length - 1 &&
               static_cast<signed char>(text[static_cast<std::size_t>(position)]) < 32)
            ++position;
        if (position >= length - 1) break;
        const auto begin = static_cast<std::size_t>(position);
        const std::size_t end = std::min(text.find(',', begin + 1), text.size());
        if (matrix.RowSize == 0 || (count > 0 && stored >= count)) throw ZfError("Too manay data");
        if (count == 0) matrix.Index(matrix.ColBegin, matrix.RowBegin);  // rows without columns: over range
        matrix.Data()[stored++] = ScanDouble(text.substr(begin, end - begin));
        position = static_cast<std::int64_t>(end) + 1;
    }
    if (stored != count || (count == 0 && matrix.RowSize != 0)) throw ZfError("Data is short");
}

/// Elements that an old text may stand for by each of its bytes.
constexpr std::size_t kFillOfOldText = 1024;

void ReadText(ZfBarnXml& xml, ZfLDoubleMatrix& matrix) {
    Shape shape;
    shape.Exchange(xml);
    std::string elements;
    xml.RawValue("elements", elements, "");
    shape.CheckPlausible(elements.size());
    shape.Apply(matrix);
    ParseElements(elements, matrix);
}

/// Text form of old files, one "r" a row. No count is checked: a row with too few values repeats its last
/// text.
void ReadOldText(ZfBarnXml& xml, ZfLDoubleMatrix& matrix) {
    Shape shape;
    shape.Exchange(xml);
    std::vector<std::string> rows;
    std::size_t textLength = 0;
    if (xml.OpenRack("elements")) {
        std::string row;
        while (static_cast<std::int32_t>(rows.size()) < shape.rowSize && xml.RawValue("r", row, "")) {
            textLength += row.size() + 1;
            rows.push_back(row);
        }
        xml.CloseRack("elements");
    }
    // Missing rows and missing columns read as something, but a matrix far beyond its text is none.
    shape.CheckPlausible((textLength + 1) * kFillOfOldText);
    shape.Apply(matrix);
    matrix.Clear();
    for (std::size_t r = 0; r < rows.size(); ++r) {
        std::string_view rest = rows[r];
        for (std::int32_t c = 0; c < shape.colSize; ++c) {
            const std::size_t comma = rest.find(',');
            matrix.Data()[static_cast<std::int64_t>(r) * shape.colSize + c] =
                ScanDouble(rest.substr(0, comma));
            if (comma != std::string_view::npos) rest.remove_prefix(comma + 1);
        }
    }
}

template <class Member>
bool ReadBinary(ZfBarnXml& xml, Member& matrix) {
    using Element = typename Member::Element;
    Shape shape;
    shape.Exchange(xml);
    if (shape.colSize == 0 || shape.rowSize == 0) {
        matrix.SetSize(0, 0);
        return true;
    }
    std::string text;
    const auto form = std::find_if(kBinaryForms.begin(), kBinaryForms.end(),
                                   [&](const BinaryForm& f) { return xml.RawValue(f.tag, text, ""); });
    if (form == kBinaryForms.end()) return false;
    const std::vector<unsigned char> bytes =
        ZfBinaryDataToText().Decode(text, form->alphabetB, form->standard);
    if (static_cast<std::int64_t>(bytes.size() / sizeof(Element)) < shape.Count()) {
        matrix.SetSize(1, 1);
        matrix.Clear();
        return false;
    }
    shape.Apply(matrix);
    std::memcpy(matrix.Data(), bytes.data(), static_cast<std::size_t>(matrix.Count()) * sizeof(Element));
    return true;
}

template <class Member>
bool ReadMatrix(ZfBarnXml& xml, Member& matrix) {
    ZfLDoubleMatrix text;
    if (xml.OpenRack("zf_matrix")) {
        ReadText(xml, text);
        xml.CloseRack("zf_matrix");
        matrix.Convert(text);
        return true;
    }
    if (xml.OpenRack("LDoubleMatrix")) {
        ReadOldText(xml, text);
        xml.CloseRack("LDoubleMatrix");
        matrix.Convert(text);
        return true;
    }
    for (const std::string_view tag : kBinaryTags<Member>) {
        if (tag.empty() || !xml.OpenRack(tag)) continue;
        const bool read = ReadBinary(xml, matrix);
        xml.CloseRack(tag);
        return read;
    }
    return false;
}

template <class Member>
void WriteText(ZfBarnXml& xml, const Member& matrix) {
    ZfLDoubleMatrix text;
    text.Convert(matrix);
    xml.OpenRack("zf_matrix");
    Shape::Of(matrix).Exchange(xml);
    xml.PutValue("elements", ElementText(text));
    xml.CloseRack("zf_matrix");
}

template <class Member>
void WriteBinary(ZfBarnXml& xml, const Member& matrix, const BinaryForm& form) {
    xml.OpenRack(kBinaryTags<Member>[0]);
    Shape::Of(matrix).Exchange(xml);
    std::string text;
    const auto length = matrix.Count() * static_cast<std::int64_t>(sizeof(typename Member::Element));
    ZfBinaryDataToText().Encode(matrix.Data(), length, text, form.alphabetB, form.standard);
    xml.PutValue(form.tag, std::move(text));
    xml.CloseRack(kBinaryTags<Member>[0]);
}

template <class Member>
bool ExchangeMatrix(ZfBarnXml& xml, std::string_view tag, Member& matrix, std::string_view format) {
    if (!xml.OpenRack(tag)) return false;
    bool done = true;
    if (!xml.IsWriting())
        done = ReadMatrix(xml, matrix);
    else if (format == "t")
        WriteText(xml, matrix);
    else if (format == "b")
        WriteBinary(xml, matrix, kBase64);
    else if (format == "bb")
        WriteBinary(xml, matrix, kBase64Standard);
    else
        throw ZfError("Write format error");
    xml.CloseRack(tag);
    return done;
}

}  // namespace

bool ZfBarnXml::Matrix(std::string_view tag, ZfDoubleMatrix& matrix, std::string_view format) {
    return ExchangeMatrix(*this, tag, matrix, format);
}

bool ZfBarnXml::Matrix(std::string_view tag, ZfFloatMatrix& matrix, std::string_view format) {
    return ExchangeMatrix(*this, tag, matrix, format);
}

bool ZfBarnXml::Matrix(std::string_view tag, ZfLDoubleMatrix& matrix, std::string_view format) {
    return ExchangeMatrix(*this, tag, matrix, format);
}

bool ZfBarnXml::Matrix3D(ZfFloatMatrix3D& matrix, std::string_view format) {
    if (IsWriting() && format != "b" && format != "bb") throw ZfError("Undefined write format");
    ZfFloatMatrix3D shape;
    if (IsWriting()) shape = matrix;
    Int32("ColSize", shape.ColSize, 0);
    Int32("ColBegin", shape.ColBegin, 0);
    Int32("RowSize", shape.RowSize, 0);
    Int32("RowBegin", shape.RowBegin, 0);
    Int32("DepthSize", shape.DepthSize, 0);
    Int32("DepthBegin", shape.DepthBegin, 0);
    std::string text;
    // Both forms stand under "base64", and the reader takes the text for that form: "bb" does not come back.
    if (IsWriting()) {
        const auto length = matrix.Count() * static_cast<std::int64_t>(sizeof(float));
        ZfBinaryDataToText().Encode(matrix.Data(), length, text, true, format == "bb");
        return RawValue("base64", text, "");
    }
    RawValue("base64", text, "");
    const std::vector<unsigned char> bytes = ZfBinaryDataToText().Decode(text, true, false);
    const std::size_t room = bytes.size() / sizeof(float);
    if (static_cast<double>(room) < static_cast<double>(shape.ColSize) * shape.RowSize * shape.DepthSize) {
        matrix = {};
        matrix.Allocate(1, 1, 1);
        *matrix.Data() = 0.0F;
        return false;
    }
    matrix.Allocate(shape.ColSize, shape.RowSize, shape.DepthSize);
    matrix.ColBegin = shape.ColBegin;
    matrix.RowBegin = shape.RowBegin;
    matrix.DepthBegin = shape.DepthBegin;
    if (matrix.Data())
        std::memcpy(matrix.Data(), bytes.data(), static_cast<std::size_t>(matrix.Count()) * sizeof(float));
    return true;
}
