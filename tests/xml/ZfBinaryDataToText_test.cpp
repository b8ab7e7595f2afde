#include "xml/ZfBinaryDataToText.h"

#include <gtest/gtest.h>

#include <numeric>

#include "ErrorText.h"

namespace {

std::string Encoded(const std::string& bytes, bool alphabetB, bool standard) {
    std::string text;
    ZfBinaryDataToText().Encode(bytes.data(), static_cast<std::int64_t>(bytes.size()), text, alphabetB,
                                standard);
    return text;
}

std::string Decoded(const std::string& text, bool alphabetB, bool standard) {
    const auto bytes = ZfBinaryDataToText().Decode(text, alphabetB, standard);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(ZfBinaryDataToText, ThreeForms) {
    struct Case {
        std::string bytes;
        const char* binary;
        const char* base64;
        const char* base64b;
    };
    // The first two columns were worked out bit by bit, the last by a Base64 tool (but for no data at all).
    const Case cases[] = {
        {"", "000000000000", "00000000AAAA", "AAAA"},
        {"A", "000000011100", "00000001BBAA", "QQ=="},
        {"\x01\x02\x03", "0000000318M0", "00000003BIwA", "AQID"},
        {"\x01\x02\x03\xff\x80", "0000000518M0-380", "00000005BIwA/DIA", "AQID/4A="},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Encoded(c.bytes, false, false), c.binary);
        EXPECT_EQ(Encoded(c.bytes, true, false), c.base64);
        EXPECT_EQ(Encoded(c.bytes, false, true), c.base64b);
        EXPECT_EQ(Decoded(c.binary, false, false), c.bytes);
        EXPECT_EQ(Decoded(c.base64, true, false), c.bytes);
        // Without a header, no data cannot be told from three zero bytes.
        EXPECT_EQ(Decoded(c.base64b, true, true), c.bytes.empty() ? std::string(3, '\0') : c.bytes);
    }
}

TEST(ZfBinaryDataToText, EveryByteAndLengthComesBack) {
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    for (std::size_t n = 253; n <= 256; ++n) {
        const std::string data = bytes.substr(256 - n);
        for (const auto& [b, standard] :
             {std::pair(false, false), std::pair(true, false), std::pair(true, true)})
            EXPECT_EQ(Decoded(Encoded(data, b, standard), b, standard), data) << n;
    }
}

TEST(ZfBinaryDataToText, BadTexts) {
    const std::pair<const char*, const char*> cases[] = {{"00000003BIwAx", "Illigal Data"},
                                                         {"0000000aAAAAAAAAAAAA", "Size Error"},
                                                         {"00000004BIwA", "Size Error"},
                                                         {"ffffffffAAAA", "Size Error"},
                                                         {"", "Size Error"},
                                                         {"0000", "Size Error"}};
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ErrorText([&] { Decoded(text, true, false); }), error) << text;
    EXPECT_EQ(ErrorText([] { Decoded("QQ=", true, true); }), "Illigal Data");
    EXPECT_EQ(Decoded("", true, true), "");
    EXPECT_EQ(Decoded("00000003\xff*!~", true, false), std::string(3, '\0'));
}
