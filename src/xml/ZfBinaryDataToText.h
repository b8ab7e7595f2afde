#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Bytes to printable text and back, in three forms:
///
/// | tag that holds it | header | alphabet | packing            | padding |
/// |-------------------|--------|----------|--------------------|---------|
/// | "binary"          | yes    | A        | low bits first     | none    |
/// | "base64"          | yes    | B        | low bits first     | none    |
/// | "base64b"         | no     | B        | Base64 (RFC 4648)  | "="     |
///
/// Alphabet A is 0-9 a-z A-Z . -, alphabet B that of Base64; a foreign character decodes as 0. The header is
/// the length in bytes as 8 hexadecimal digits. Data of length 0 still makes one group of four characters.
class ZfBinaryDataToText {
public:
    ZfBinaryDataToText();
    ZfBinaryDataToText(const ZfBinaryDataToText&) = default;
    ZfBinaryDataToText& operator=(const ZfBinaryDataToText&) = default;
    virtual ~ZfBinaryDataToText() = default;

    /// `standard` makes "base64b" and overrides; else `alphabetB` makes "base64", and neither "binary".
    void Encode(const void* data, std::int64_t length, std::string& text, bool alphabetB,
                bool standard) const;

    /// Throws ZfError when the text's length fits no whole groups or not its header.
    std::vector<unsigned char> Decode(std::string_view text, bool alphabetB, bool standard) const;

private:
    struct Table {
        explicit Table(std::string_view alphabet);
        std::array<char, 64> encode{};
        std::array<unsigned char, 256> decode{};
    };

    void EncodeStandard(const unsigned char* data, std::int64_t length, std::string& text) const;
    std::vector<unsigned char> DecodeStandard(std::string_view text) const;

    Table a_;
    Table b_;
};
