#include "input/LmTable.h"

#include <cstring>
#include <utility>

#include "xml/ZfBarnXml.h"
#include "xml/ZfBinaryDataToText.h"

namespace qvre {

namespace {

const std::string kBinaryTag = "base64";
const std::string kSizeTag = "Size_l";

void ExchangeElement(ZfBarnXml& xml, std::complex<double>& element) {
    double re = element.real();
    double im = element.imag();
    xml.LDouble("r", re, 0.0);
    xml.LDouble("i", im, 0.0);
    element = {re, im};
}

/// One "l" an order with one "m" an element; they are taken in order, and a missing one fails at its closing.
void ExchangeText(ZfBarnXml& xml, ZfLmComplexTable& table) {
    std::vector<std::complex<double>> elements;  // grows with the text, whatever size it announces
    for (std::int32_t l = 0; l < table.L; ++l) {
        xml.OpenRack("l");
        for (std::int32_t m = -l; m <= l; ++m) {
            xml.OpenRack("m");
            ExchangeElement(xml, elements.emplace_back(std::as_const(table).At(l, m)));
            xml.CloseRack("m");
        }
        xml.CloseRack("l");
    }
    table.block.swap(elements);
}

std::size_t Bytes(const ZfLmComplexTable& table) {
    return table.Count() * sizeof(std::complex<double>);
}

bool ReadBinary(const std::string& text, ZfLmComplexTable& table) {
    const std::vector<unsigned char> bytes = ZfBinaryDataToText().Decode(text, true, false);
    if (bytes.size() != Bytes(table)) {
        table.SetSize(1);
        table.Zero();
        return false;
    }
    table.Fill();
    if (!bytes.empty()) std::memcpy(static_cast<void*>(table.block.data()), bytes.data(), bytes.size());
    return true;
}

void Write(ZfBarnXml& xml, ZfLmComplexTable& table, const std::string& format) {
    if (format == "t") {
        xml.OpenRack("Value");
        ExchangeText(xml, table);
        xml.CloseRack("Value");
    } else if (format == "b") {
        xml.PutValue(kBinaryTag, CoefficientText(table));
    } else {
        throw ZfError("Write Format Error");
    }
}

/// False when binary data has the wrong length.
bool Read(ZfBarnXml& xml, ZfLmComplexTable& table) {
    if (xml.OpenRack("Value")) {
        ExchangeText(xml, table);
        xml.CloseRack("Value");
        return true;
    }
    std::string text;
    return !xml.RawValue(kBinaryTag, text, "") || ReadBinary(text, table);
}

}  // namespace

void ThrowIllegalL() {
    throw ZfError("Illegal l value");
}

void ThrowIllegalM() {
    throw ZfError("Illegal m value");
}

bool ExchangeCoefficients(ZfBarnXml& xml, const std::string& tag, ZfLmComplexTable& table,
                          const std::string& format) {
    if (!xml.OpenRack(tag)) return false;
    std::int32_t size = table.L;
    xml.Int32(kSizeTag, size, 0);
    if (xml.IsWriting()) {
        Write(xml, table, format);
    } else {
        table.SetZero(size);
        if (!Read(xml, table)) return false;
    }
    xml.CloseRack(tag);
    return true;
}

std::string CoefficientText(ZfLmComplexTable& table) {
    table.Fill();
    std::string text;
    ZfBinaryDataToText().Encode(table.block.data(), static_cast<std::int64_t>(Bytes(table)), text, true,
                                false);
    return text;
}

void PutCoefficients(ZfBarnXml& xml, const std::string& tag, std::int32_t size, std::string text) {
    xml.OpenRack(tag);
    xml.Int32(kSizeTag, size, 0);
    xml.PutValue(kBinaryTag, std::move(text));
    xml.CloseRack(tag);
}

}  // namespace qvre
