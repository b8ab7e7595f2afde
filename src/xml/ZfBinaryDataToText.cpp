#include "xml/ZfBinaryDataToText.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "foundation/ZfError.h"

namespace {

constexpr std::string_view kAlphabetA = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-";
constexpr std::string_view kAlphabetB = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int64_t kHeader = 8;

/// Groups of three bytes; signed, so that no data at all makes one group.
std::int64_t Groups(std::int64_t length) {
    return (length - 1) / 3 + 1;
}

/// put(b0, b1, b2) for every group, the last one filled up with zeros.
template <class Put>
void ForGroups(const unsigned char* data, std::int64_t length, const Put& put) {
    const std::int64_t whole = length / 3;
    for (std::int64_t g = 0; g < whole; ++g, data += 3)
        put(unsigned{data[0]}, unsigned{data[1]}, unsigned{data[2]});
    if (whole == Groups(length)) return;
    std::array<unsigned, 2> last{};
    for (std::int64_t i = 0; i < length % 3; ++i) last[static_cast<std::size_t>(i)] = data[i];
    put(last[0], last[1], 0U);
}

std::vector<unsigned char> NewBlock(std::int64_t size) {
    try {
        return std::vector<unsigned char>(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        throw ZfError("Memory cannot allocate");
    }
}

unsigned char Byte(unsigned value) {
    return static_cast<unsigned char>(value & 255U);
}

}  // namespace

ZfBinaryDataToText::Table::Table(std::string_view alphabet) {
    if (alphabet.size() != encode.size()) throw ZfError("Definition error");
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        encode[i] = alphabet[i];
        decode[static_cast<unsigned char>(alphabet[i])] = static_cast<unsigned char>(i);
    }
}

ZfBinaryDataToText::ZfBinaryDataToText() : a_(kAlphabetA), b_(kAlphabetB) {}

void ZfBinaryDataToText::Encode(const void* data, std::int64_t length, std::string& text, bool alphabetB,
                                bool standard) const {
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (standard) {
        EncodeStandard(bytes, length, text);
        return;
    }
    const std::array<char, 64>& t = (alphabetB ? b_ : a_).encode;
    std::array<char, 24> header;
    std::snprintf(header.data(), header.size(), "%08lx", static_cast<unsigned long>(length));
    text.assign(header.data());
    text.resize(static_cast<std::size_t>(kHeader + 4 * Groups(length)));
    char* out = text.data() + kHeader;
    ForGroups(bytes, length, [&](unsigned b0, unsigned b1, unsigned b2) {
        out[0] = t[b0 & 63U];
        out[1] = t[(b1 & 15U) * 4 | b0 >> 6];
        out[2] = t[(b2 & 3U) * 16 | b1 >> 4];
        out[3] = t[b2 >> 2];
        out += 4;
    });
}

void ZfBinaryDataToText::EncodeStandard(const unsigned char* data, std::int64_t length,
                                        std::string& text) const {
    const std::array<char, 64>& t = b_.encode;
    text.resize(static_cast<std::size_t>(4 * Groups(length)));
    char* out = text.data();
    ForGroups(data, length, [&](unsigned b0, unsigned b1, unsigned b2) {
        out[0] = t[b0 >> 2];
        out[1] = t[(b0 & 3U) * 16 | b1 >> 4];
        out[2] = t[(b1 & 15U) * 4 | b2 >> 6];
        out[3] = t[b2 & 63U];
        out += 4;
    });
    const std::int64_t last = length % 3;
    if (last != 0) text.back() = '=';
    if (last == 1) text[text.size() - 2] = '=';
}

std::vector<unsigned char> ZfBinaryDataToText::Decode(std::string_view text, bool alphabetB,
                                                      bool standard) const {
    if (text.size() % 4 != 0) throw ZfError("Illigal Data");
    if (standard) return DecodeStandard(text);
    const std::string header(text.substr(0, kHeader));
    const auto length = static_cast<std::int64_t>(std::strtoul(header.c_str(), nullptr, 16) & 0xffffffffUL);
    const std::int64_t room = (static_cast<std::int64_t>(text.size()) - kHeader) / 4 * 3;
    if (3 * Groups(length) != room) throw ZfError("Size Error");

    std::vector<unsigned char> block = NewBlock(room);
    const std::array<unsigned char, 256>& t = (alphabetB ? b_ : a_).decode;
    const auto* in = reinterpret_cast<const unsigned char*>(text.data()) + kHeader;
    for (std::size_t i = 0; i < block.size(); i += 3, in += 4) {
        block[i] = Byte(t[in[0]] | t[in[1]] * 64U);
        block[i + 1] = Byte(static_cast<unsigned>(t[in[1]] >> 2) | t[in[2]] * 16U);
        block[i + 2] = Byte(static_cast<unsigned>(t[in[2]] >> 4) | t[in[3]] * 4U);
    }
    block.resize(static_cast<std::size_t>(length));
    return block;
}

std::vector<unsigned char> ZfBinaryDataToText::DecodeStandard(std::string_view text) const {
    std::vector<unsigned char> block = NewBlock(static_cast<std::int64_t>(text.size()) / 4 * 3);
    // "=" decodes as 0, which is also the value of "A".
    const std::array<unsigned char, 256>& t = b_.decode;
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t i = 0; i < block.size(); i += 3, in += 4) {
        block[i] = Byte(t[in[0]] * 4U | static_cast<unsigned>(t[in[1]] >> 4));
        block[i + 1] = Byte(t[in[1]] * 16U | static_cast<unsigned>(t[in[2]] >> 2));
        block[i + 2] = Byte(t[in[2]] * 64U | t[in[3]]);
    }
    if (text.empty()) return block;
    const std::size_t missing = text[text.size() - 2] == '=' ? 2 : (text.back() == '=' ? 1 : 0);
    block.resize(block.size() - missing);
    return block;
}
