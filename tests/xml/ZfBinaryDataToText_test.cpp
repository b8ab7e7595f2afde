#include "xml/ZfBinaryDataToText.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>

#include "ErrorText.h"

namespace {

std::string Encoded(const std::string& bytes, bool alphabetB, bool standard) {
    std::string text;
    ZfBinaryDataToText().Encode(bytes.data(), std::ssize(bytes), text, alphabetB, standard);
    return text;
}

std::string Decoded(const std::string& text, bool alphabetB, bool standard) {
    const auto bytes = ZfBinaryDataToText().Decode(text, alphabetB, standard);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(ZfBinaryDataToText, ThreeForms) {
    // "binary" and "base64" were worked out bit by bit, "base64b" by a Base64 tool (but for no data at all).
    const std::array<std::string, 4> cases[] = {
        {"", "000000000000", "00000000AAAA", "AAAA"},
        {"A", "000000011100", "00000001BBAA", "QQ=="},
        {"\x01\x02\x03\xff\x80", "0000000518M0-380", "00000005BIwA/DIA", "AQID/4A="}};
    for (const auto& [bytes, binary, base64, base64b] : cases) {
        EXPECT_EQ(Encoded(bytes, false, false), binary);
        EXPECT_EQ(Encoded(bytes, true, false), base64);
        EXPECT_EQ(Encoded(bytes, false, true), base64b);
        EXPECT_EQ(Decoded(binary, false, false), bytes);
        EXPECT_EQ(Decoded(base64, true, false), bytes);
        // Without a header, no data cannot be told from three zero bytes.
        EXPECT_EQ(Decoded(base64b, true, true), bytes.empty() ? std::string(3, '\0') : bytes);
    }
    std::string all(256, '\0');
    std::iota(all.begin(), all.end(), '\0');
    for (const std::size_t n : {254U, 255U, 256U})
        for (const bool standard : {false, true})
            EXPECT_EQ(Decoded(Encoded(all.substr(256 - n), true, standard), true, standard),
                      all.substr(256 - n));
}

TEST(ZfBinaryDataToText, BadTexts) {
    const std::pair<const char*, const char*> cases[] = {{"00000003BIwAx", "Illigal Data"},
                                                         {"0000000aAAAAAAAAAAAA", "Size Error"},
                                                         {"00000004BIwA", "Size Error"},
                                                         {"ffffffffAAAA", "Size Error"},
                                                         {"", "Size Error"},
                                                         {"0000", "Size Error"}};
    for (const auto& c : cases)
        EXPECT_EQ(ErrorText([&] { Decoded(c.first, true, false); }), c.second) << c.first;
    EXPECT_EQ(ErrorText([] { Decoded("QQ=", true, true); }), "Illigal Data");
    EXPECT_EQ(Decoded("", true, true), "");
    EXPECT_EQ(Decoded("00000003\xff*!~", true, false), std::string(3, '\0'));
}
